#include "process_filter.h"

#include <fnmatch.h>
#include <utility>

namespace runs {

ProcessFilter::ProcessFilter(std::vector<std::string> patterns)
    : patterns_(std::move(patterns)), matched_(patterns_.size()) {}

bool ProcessFilter::has(int pid, const std::string& name) {
  bool any = patterns_.empty();
  const auto number = std::to_string(pid);
  for (std::size_t i = 0; i < patterns_.size(); ++i) {
    const auto& pattern = patterns_[i];
    if (pattern != number && fnmatch(pattern.c_str(), name.c_str(), 0) != 0) continue;
    matched_[i] = true;
    any = true;
  }
  return any;
}

std::vector<std::string> ProcessFilter::unmatched() const {
  std::vector<std::string> patterns;
  for (std::size_t i = 0; i < patterns_.size(); ++i) {
    if (!matched_[i]) patterns.push_back(patterns_[i]);
  }
  return patterns;
}

}  // namespace runs
