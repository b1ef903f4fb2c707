#pragma once

#include <string>
#include <vector>

#include "run_choice.h"

struct ReportOptions {
  RunChoice choice;               // its `run` is not used
  std::vector<std::string> runs;  // run folders; none: the newest
  std::string output;             // empty: the first run's name with .html, where the caller stands
};

/// Writes a page of the runs over each other. Returns the exit status.
int report(const ReportOptions& options);
