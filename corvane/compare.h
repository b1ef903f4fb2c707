#pragma once

#include <string>
#include <vector>

#include "run_choice.h"

struct CompareOptions {
  std::vector<std::string> base, fresh;  // run folders or shell patterns of them
  RunChoice choice;                      // what of each run is meant; its run is not used
  double atLeastPercent = 1;
  std::vector<std::string> moreIsBetter;  // metrics
  std::vector<std::string> failIf;        // conditions
  bool all = false;                       // figures without a change, too
  bool json = false;
  std::string report;  // a page of both sides; empty: none
};

/// Compares two sides of runs on standard output. Returns the exit status.
int compare(const CompareOptions& options);
