// The three ways of reading a file's lines, through a buffer that is shorter than many of them.
// The first byte of the input is the buffer's size.

#include "plain_convert.h"
#include "result_rows.h"
#include "same.h"
#include "scratch_folder.h"

namespace {

std::string rowsOf(const std::string& path, Reading reading, std::size_t bufferSize) {
  ResultRows rows(path, reading, bufferSize);
  std::string text;
  while (rows.next())
    text += joined(rows.fields()) + "\n";
  return text;
}

std::string rowsOf(const plain::Table& table) {
  std::string text;
  for (const auto& row : table)
    text += joined(row) + "\n";
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const auto& folder = *new ScratchFolder;
  if (size == 0) return 0;
  const std::size_t bufferSize = data[0] + std::size_t{1};
  const std::string content(data + 1, data + size);
  const auto path = folder.write("rows.txt", content);
  expectSame(rowsOf(path, traceReading, bufferSize), rowsOf(plain::traceTable(content)), "trace");
  expectSame(rowsOf(path, summaryReading, bufferSize), rowsOf(plain::summaryTable(content)),
             "summary");
  int emptyLines = 0;
  const auto rows = rowsOf(plain::csvTable(content, emptyLines));
  const Console console;
  expectSame(rowsOf(path, csvReading, bufferSize), rows, "csv");
  std::string told;
  while (emptyLines-- > 0)
    told += "Found an empty line\n";
  expectSame(console.text(), told, "csv's console");
  return 0;
}
