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

int csvConvert(const Folder& directory) {
  printLine("Directory to be parsed = " + directory.path());
  parseFilesCsv(listRunFolder(directory));
  return 0;
}

int parseFilesCsv(const std::vector<FilePath>& files) {
  for (const auto& file : files) {
    if (!isResultFile(file.path)) continue;
    printLine("Processing File: " + file.path);
    generateCSV(file);
    csvStream.close();
  }
  return 0;
}

int generateCSV(const FilePath& file) {
  csvStream.open({file.path.substr(0, file.path.size() - 4) + ".csv", file.in});
  printLine("In generate CSV : Processing : " + file.path);
  ResultRows rows(file, csvReading);
  if (!rows.isOpen()) {
    printLine("No such file.");
    return -1;
  }
  while (rows.next())
    putRow(rows.fields());
  ++csvConversionCount;
  return 0;
}
