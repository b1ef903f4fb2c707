#include "discoveries.h"

#include <algorithm>

std::vector<bool> discoveries(std::span<const double> probabilities, double rate) {
  std::vector<double> sorted(probabilities.begin(), probabilities.end());
  std::sort(sorted.begin(), sorted.end());
  double bound = -1;  // none
  for (std::size_t at = 0; at < sorted.size(); ++at) {
    if (sorted[at] <= rate * double(at + 1) / double(sorted.size())) bound = sorted[at];
  }
  std::vector<bool> found;
  found.reserve(probabilities.size());
  for (const double p : probabilities)
    found.push_back(p <= bound);
  return found;
}
