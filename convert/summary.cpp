#include "summary.h"

#include <iomanip>
#include <iostream>

#include "kinds.h"
#include "print_line.h"
#include "run_folder.h"
#include "series.h"

std::vector<std::vector<Summary>> summaryTable;
std::vector<Summary> cpuSummaries, gpuSummaries, adspSummaries, cdspSummaries, ddrSummaries,
    memSummaries, diskioSummaries;

int getSummary(const Folder& directory) {
  printLine("Directory to be parsed = " + directory.path());
  parseSummaryFiles(listRunFolder(directory));
  printSummary();
  return 0;
}

int parseSummaryFiles(const std::vector<FilePath>& files) {
  for (const auto& file : files) {
    if (!isResultFile(file.path)) continue;
    printLine("Processing File : " + file.path);
    for (const auto& kind : allKinds) {
      if (kind.summaries == nullptr || !isFileOf(kind, file.path)) continue;
      printLine(announcement(kind));
      generateSummary(file, kind.id);
    }
  }
  return 0;
}

void generateSummary(const FilePath& file, SYSIP kind) {
  printLine("In generate Summary : Processing : " + file.path);
  ResultRows rows(file, summaryReading);
  if (!rows.isOpen()) {
    printLine("No such file.");
    return;
  }
  const auto* const found = findKind(kind);
  if (found == nullptr || found->summaries == nullptr) {
    printLine("Summary feature not yet supported for " + std::to_string(kind));
    return;
  }
  // A disk has a row of its own in each sample, all else has columns.
  const auto series = kind == DISKIO_STATS ? deviceSeries(rows) : columnSeries(rows);
  for (const auto& [name, samples] : series)
    found->summaries->push_back(samples.summary(found->summaryPrefix + name));
  summaryTable.push_back(*found->summaries);
}

void printSummary() {
  const auto bar = [](std::ostream& out) -> std::ostream& { return out << std::setw(3) << "|"; };
  auto& out = std::cout;
  printLine(std::string(47, '+') + "SUMMARY" + std::string(48, '+') + "\n");
  bar(out << std::setw(30) << "Metric");
  for (const auto* heading : {"Min", "Avg", "Max"})
    bar(out << std::setw(20) << heading);
  printLine("");
  out << std::fixed << std::setprecision(2);
  for (const auto& rows : summaryTable) {
    for (const auto& row : rows) {
      bar(out << std::setw(30) << row.name);
      for (const auto value : {row.min, row.avg, row.max})
        bar(out << std::setw(20) << value);
      printLine("");
    }
  }
  printLine("\n" + std::string(103, '+'));
}
