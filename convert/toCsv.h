#pragma once

#include <string>
#include <vector>

#include "folder.h"

/// How many files have been converted.
extern int csvConversionCount;

/// Converts every result file of a run folder (no "/" at its end) into a CSV file beside it.
/// Always 0.
int csvConvert(const Folder& directory);

/// Converts those of `files` whose paths contain ".txt". Always 0.
int parseFilesCsv(const std::vector<FilePath>& files);

/// Writes the fields of a result file into the file of the same name that ends in ".csv" in place
/// of its last four characters; numbers go through a 32-bit float and have two decimals. The
/// output stays open: parseFilesCsv closes it. Returns -1 when `file` cannot be opened, else 0.
int generateCSV(const FilePath& file);
