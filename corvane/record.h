#pragma once

#include <optional>
#include <string>
#include <vector>

/// The words of the command line, not yet looked at.
struct RecordOptions {
  std::optional<std::vector<std::string>> command;  ///< what stands after "--"
  std::string limit;                                ///< --for
  std::vector<std::string> only, without, every, labels;
  std::optional<std::string> name, mark;
  std::string output = ".", profiler;
  bool json = false, csv = false, report = false, quiet = false;
};

/// Records a run, or marks one that is being recorded. Returns the exit status.
int record(const RecordOptions& options);
