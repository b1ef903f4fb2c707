#pragma once

#include <string>
#include <vector>

#include "folder.h"
#include "sysip.h"

/// One row of the table: a series of samples.
struct Summary {
  std::string name;
  float min = 0;
  float max = 0;
  float avg = 0;
};

/// One inner list for each summarised file. Nothing is ever taken out of these lists.
extern std::vector<std::vector<Summary>> summaryTable;
extern std::vector<Summary> cpuSummaries, gpuSummaries, adspSummaries, cdspSummaries, ddrSummaries,
    memSummaries, diskioSummaries;

/// Summarises the result files of a run folder (no "/" at its end) and prints the table. Always 0.
int getSummary(const Folder& directory);

/// Summarises those of `files` that are result files of a summarised kind. Always 0.
int parseSummaryFiles(const std::vector<FilePath>& files);

/// Adds a result file's rows to the list of its kind, and a copy of that list to the table. Throws
/// std::out_of_range where a row does not fit the header.
void generateSummary(const FilePath& file, SYSIP kind);

/// Prints the table; leaves std::cout in fixed notation with two decimals.
void printSummary();
