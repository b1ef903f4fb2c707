#include "toJson.h"

#include <iostream>

#include "kinds.h"
#include "output_file.h"
#include "print_line.h"
#include "result_rows.h"
#include "run_folder.h"
#include "trace_rows.h"

namespace {

OutputFile trace;

/// The metadata event and all counter events of a file whose first data row has been read.
void putEvents(const Kind& kind, const std::vector<std::string>& header, ResultRows& rows) {
  if (kind.traceNotice != nullptr) printLine(kind.traceNotice);
  const auto metadata =
      createMetadata("process_name", std::string(rows.fields().at(0)), std::string(kind.pid),
                     std::string(kind.metadataTid), "name", std::string(kind.name) + "_STATS");
  trace.put(metadata);
  if (kind.metadataEchoed) printLine(metadata);
  putRows(kind, header, rows, trace);
}

}  // namespace

int jsonConvert(const Folder& dir) {
  printLine("Directory to be parsed = " + dir.path());
  const auto path = dir.path() + "/ProfilerOutput.json";
  trace.open({path, &dir});
  if (trace.hasFailed()) {
    std::cerr << "open file '" + path + "' failed!\n";
    return -1;
  }
  try {
    parseFiles(listRunFolder(dir));
  } catch (...) {
    trace.close();  // nobody else catches it: the program ends, and its buffers with it
    throw;
  }
  trace.close();
  return 0;
}

int parseFiles(const std::vector<FilePath>& files) {
  trace.put("{\"displayTimeUnit\": \"ns\",\n \"traceEvents\": [");
  for (const auto& file : files) {
    if (!isResultFile(file.path)) continue;
    printLine("Processing File : " + file.path);
    for (const auto& kind : allKinds) {
      if (!isFileOf(kind, file.path)) continue;
      printLine(announcement(kind));
      generateJson(file, kind.id);
    }
  }
  trace.put("]}\n");
  return 0;
}

int generateJson(const FilePath& file, SYSIP kind) {
  printLine("In generate JSON : Processing : " + file.path);
  ResultRows rows(file, traceReading);
  if (!rows.isOpen()) {
    printLine("No such file.");
    return -1;
  }
  std::vector<std::string> header;
  if (rows.next()) header.assign(rows.fields().begin(), rows.fields().end());
  if (!rows.next()) {
    std::cout << "No actual data, json file will not be generated!\n";
    return 0;
  }
  const auto* const known = findKind(kind);
  if (known == nullptr) {
    printLine("default");
    return 0;
  }
  putEvents(*known, header, rows);
  return 0;
}
