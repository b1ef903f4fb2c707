#include "toCsv.h"

#include <iostream>

#include "numbers.h"
#include "output_file.h"
#include "result_rows.h"
#include "run_folder.h"

int csvConversionCount = 0;

namespace {

OutputFile csvStream;

void putField(std::string_view field) {
  if (const auto number = toFloat(field)) {
    csvStream.take(putTwoDecimals(csvStream.room(twoDecimalsRoom), *number));
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
  std::cout << "Directory to be parsed = " << directory << std::endl;
  parseFilesCsv(listRunFolder(directory));
  return 0;
}

int parseFilesCsv(std::vector<std::string> paths) {
  for (const auto& path : paths) {
    if (!isResultFile(path)) continue;
    std::cout << "Processing File: " << path << std::endl;
    generateCSV(path);
    csvStream.close();
  }
  return 0;
}

int generateCSV(std::string path) {
  csvStream.open(path.substr(0, path.size() - 4) + ".csv");
  std::cout << "In generate CSV : Processing : " << path << std::endl;
  ResultRows rows(path, csvReading);
  if (!rows.isOpen()) {
    std::cout << "No such file." << std::endl;
    return -1;
  }
  while (rows.next())
    putRow(rows.fields());
  ++csvConversionCount;
  return 0;
}
