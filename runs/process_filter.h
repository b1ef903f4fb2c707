#pragma once

#include <string>
#include <vector>

namespace runs {

/// Which processes of a run are meant, by their names and PIDs.
class ProcessFilter {
 public:
  /// Names (shell patterns) or PIDs; empty: all.
  explicit ProcessFilter(std::vector<std::string> patterns);

  /// Whether samples of a process under this name are meant.
  bool has(int pid, const std::string& name);
  /// The patterns that no process has been asked for that they mean.
  std::vector<std::string> unmatched() const;

 private:
  std::vector<std::string> patterns_;
  std::vector<bool> matched_;
};

}  // namespace runs
