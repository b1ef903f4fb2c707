#include "toJson.h"

#include <iostream>

#include "kinds.h"
#include "output_file.h"
#include "result_rows.h"
#include "run_folder.h"
#include "trace_rows.h"

namespace {

OutputFile trace;

/// The metadata event and all counter events of a file whose first data row has been read.
void putEvents(const Kind& kind, const std::vector<std::string>& header, ResultRows& rows) {
  if (kind.traceNotice != nullptr) std::cout << kind.traceNotice << std::endl;
  const auto metadata =
      createMetadata("process_name", std::string(rows.fields().at(0)), std::string(kind.pid),
                     std::string(kind.metadataTid), "name", std::string(kind.name) + "_STATS");
  trace.put(metadata);
  if (kind.metadataEchoed) std::cout << metadata << std::endl;
  putRows(kind, header, rows, trace);
}

}  // namespace

int jsonConvert(std::string dir) {
  std::cout << "Directory to be parsed = " << dir << std::endl;
  const auto path = dir + "/ProfilerOutput.json";
  trace.open(path);
  if (trace.hasFailed()) {
    std::cerr << "open file '" << path << "' failed!" << std::endl;
    return -1;
  }
  parseFiles(listRunFolder(dir));
  trace.close();
  return 0;
}

int parseFiles(std::vector<std::string> files) {
  trace.put("{\"displayTimeUnit\": \"ns\",\n \"traceEvents\": [");
  for (const auto& file : files) {
    if (!isResultFile(file)) continue;
    std::cout << "Processing File : " << file << std::endl;
    for (const auto& kind : allKinds) {
      if (!isFileOf(kind, file)) continue;
      std::cout << announcement(kind) << std::endl;
      generateJson(file, kind.id);
    }
  }
  trace.put("]}\n");
  return 0;
}

int generateJson(std::string file, SYSIP kind) {
  std::cout << "In generate JSON : Processing : " << file << std::endl;
  ResultRows rows(file, traceReading);
  if (!rows.isOpen()) {
    std::cout << "No such file." << std::endl;
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
    std::cout << "default" << std::endl;
    return 0;
  }
  try {
    putEvents(*known, header, rows);
  } catch (...) {
    trace.flush();  // nobody else catches it: the program ends, and its buffers with it
    throw;
  }
  return 0;
}
