#include "toCsv.h"

#include "numbers.h"
#include "output_file.h"
#include "print_line.h"
#include "result_rows.h"
#include "run_folder.h"

int csvConversionCount = 0;

namespace {

OutputFile csvStream;

void putField(std::string_view field) {
  if (const char* const end = putNumber(csvStream.room(twoDecimalsRoom), field)) {
    csvStream.take(end);
  } else {
    csvStream.put(field);
  }
}

void putRow(const Fields& fields) {
  const char* separator = "";
  for (const auto field : fields) {
    csvStream.put(separator);
    putField(field);
    separator = ",";
  }
  csvStream.put("\n");
}

}  // namespace

int csvConvert(std::string directory) {
  printLine("Directory to be parsed = " + directory);
  parseFilesCsv(listRunFolder(directory));
  return 0;
}

int parseFilesCsv(std::vector<std::string> paths) {
  for (const auto& path : paths) {
    if (!isResultFile(path)) continue;
    printLine("Processing File: " + path);
    generateCSV(path);
    csvStream.close();
  }
  return 0;
}

int generateCSV(std::string path) {
  csvStream.open(path.substr(0, path.size() - 4) + ".csv");
  printLine("In generate CSV : Processing : " + path);
  ResultRows rows(path, csvReading);
  if (!rows.isOpen()) {
    printLine("No such file.");
    return -1;
  }
  while (rows.next())
    putRow(rows.fields());
  ++csvConversionCount;
  return 0;
}
