#include "suggestion.h"

#include <algorithm>
#include <numeric>
#include <utility>

std::size_t editDistance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1), above, twoAbove;
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    twoAbove = std::exchange(above, row);
    row[0] = i + 1;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const auto replaced = above[j] + (from[i] == to[j] ? 0 : 1);
      row[j + 1] = std::min({replaced, row[j] + 1, above[j + 1] + 1});
      if (i > 0 && j > 0 && from[i] == to[j - 1] && from[i - 1] == to[j])
        row[j + 1] = std::min(row[j + 1], twoAbove[j - 1] + 1);
    }
  }
  return row.back();
}

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
  const auto best = std::ranges::min_element(
      candidates, {}, [&](const std::string& candidate) { return editDistance(word, candidate); });
  const auto close = std::max<std::size_t>(1, word.size() / 3);
  if (best == candidates.end() || editDistance(word, *best) > close) return "";
  return "; did you mean " + *best + "?";
}
