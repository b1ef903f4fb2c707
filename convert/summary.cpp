#include "summary.h"

#include <iomanip>
#include <iostream>

#include "kinds.h"
#include "run_folder.h"
#include "series.h"

std::vector<std::vector<Summary>> summaryTable;
std::vector<Summary> cpuSummaries, gpuSummaries, adspSummaries, cdspSummaries, ddrSummaries,
    memSummaries, diskioSummaries;

int getSummary(std::string directory) {
  std::cout << "Directory to be parsed = " << directory << std::endl;
  parseSummaryFiles(listRunFolder(directory));
  printSummary();
  return 0;
}

int parseSummaryFiles(std::vector<std::string> paths) {
  for (const auto& path : paths) {
    if (!isResultFile(path)) continue;
    std::cout << "Processing File : " << path << std::endl;
    for (const auto& kind : allKinds) {
      if (kind.summaries == nullptr || !isFileOf(kind, path)) continue;
      std::cout << announcement(kind) << std::endl;
      generateSummary(path, kind.id);
    }
  }
  return 0;
}

void generateSummary(std::string path, SYSIP kind) {
  std::cout << "In generate Summary : Processing : " << path << std::endl;
  ResultRows rows(path, summaryReading);
  if (!rows.isOpen()) {
    std::cout << "No such file." << std::endl;
    return;
  }
  const auto* const found = findKind(kind);
  if (found == nullptr || found->summaries == nullptr) {
    std::cout << "Summary feature not yet supported for " << int(kind) << std::endl;
    return;
  }
  // Kinds with a series for each column are those with a track for each column, and the memory.
  const auto series = kind == DISKIO_STATS ? deviceSeries(rows) : columnSeries(rows);
  for (const auto& [name, samples] : series)
    found->summaries->push_back(samples.summary(found->summaryPrefix + name));
  summaryTable.push_back(*found->summaries);
}

void printSummary() {
  const auto bar = [](std::ostream& out) -> std::ostream& { return out << std::setw(3) << "|"; };
  auto& out = std::cout;
  out << std::string(47, '+') << "SUMMARY" << std::string(48, '+') << "\n" << std::endl;
  bar(out << std::setw(30) << "Metric");
  for (const auto* heading : {"Min", "Avg", "Max"})
    bar(out << std::setw(20) << heading);
  out << std::endl;
  out << std::fixed << std::setprecision(2);
  for (const auto& rows : summaryTable) {
    for (const auto& row : rows) {
      bar(out << std::setw(30) << row.name);
      for (const auto value : {row.min, row.avg, row.max})
        bar(out << std::setw(20) << value);
      out << std::endl;
    }
  }
  out << "\n" << std::string(103, '+') << std::endl;
}
