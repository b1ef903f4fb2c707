#include "plain_convert.h"
#include "same.h"
#include "scratch_folder.h"
#include "toCsv.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  static const auto& folder = *new ScratchFolder;
  const std::string content(data, size);
  const auto path = folder.write("x.txt", content);
  {
    const Console console;
    parseFilesCsv({path});
  }
  int emptyLines = 0;
  expectSame(folder.read("x.csv"), plain::csv(plain::csvTable(content, emptyLines)), "csv");
  return 0;
}
