#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "run_summary.h"

/// What the runs of both sides were made with, as far as they tell: what differs there may be the
/// reason for what differs in the figures.
class Settings {
 public:
  void add(int side, const runs::RunSummary& run);

  /// A sentence for everything that is not the same on both sides.
  std::vector<std::string> differences() const;

 private:
  void note(int side, const std::string& what, const std::string& value);

  std::vector<std::string> order_;  // of what, as it was met
  std::map<std::string, std::set<std::string>> values_[2];
};
