#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "run_summary.h"

/// The first few of the words, and how many more there are.
std::string listed(const std::vector<std::string>& words, const std::string& between);

/// What the runs of both sides were made with, as far as they tell: what differs there may be the
/// reason for what differs in the figures.
class Settings {
 public:
  void add(int side, const runs::RunSummary& run);

  /// A sentence for everything that is not the same on both sides.
  std::vector<std::string> differences() const;

 private:
  void note(int side, const std::string& what, const std::string& value);
  void noteMetadata(int side, const runs::Metadata& metadata);
  std::string lengths() const;
  bool bothHaveMetadata() const;

  std::vector<std::string> order_;  // of what, as it was met
  std::map<std::string, std::set<std::string>> values_[2];
  std::set<std::string> optional_;  // of what: where only one side has it, that is a difference
  double seconds_[2] = {0, 0};      // of all runs together
  std::size_t runs_[2] = {0, 0};
};
