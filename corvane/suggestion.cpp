#include "suggestion.h"

#include <algorithm>
#include <numeric>

namespace {

/// How many letters have to be changed, added or left out to get from one word to the other.
std::size_t distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char letter : from) {
    auto diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const auto replaced = diagonal + (letter == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
  const auto best = std::ranges::min_element(
      candidates, {}, [&](const std::string& candidate) { return distance(word, candidate); });
  const auto close = std::max<std::size_t>(2, word.size() / 3);
  if (best == candidates.end() || distance(word, *best) > close) return "";
  return "; did you mean " + *best + "?";
}
