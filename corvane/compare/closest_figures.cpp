#include "closest_figures.h"

#include <algorithm>
#include <cctype>
#include <set>

#include "suggestion.h"
#include "words.h"

namespace {

std::string inSmallLetters(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char letter) { return char(std::tolower(letter)); });
  return text;
}

std::set<std::string> partsOf(const std::string& name) {
  const auto parts = split(name, ".:");
  return {parts.begin(), parts.end()};
}

/// How many letters differ, less for the parts that both have: the right device or metric says
/// more than a like length.
long unlikeness(const std::string& said, const std::string& name) {
  constexpr long weight = 2;
  auto letters = long(editDistance(said, name));
  const auto parts = partsOf(name);
  for (const auto& part : partsOf(said)) {
    if (parts.contains(part)) letters -= weight * long(part.size());
  }
  return letters;
}

}  // namespace

std::string closestFigures(const std::string& said, const std::vector<std::string>& names) {
  constexpr std::size_t most = 3;
  constexpr long alike = 3;  // letters that the further ones may be worse than the best
  const auto wanted = inSmallLetters(said);
  std::set<std::pair<long, std::string>> ranked;
  for (const auto& name : names)
    ranked.emplace(unlikeness(wanted, inSmallLetters(name)), name);
  std::vector<std::string> close;
  for (const auto& [letters, name] : ranked) {
    if (close.size() == most || letters > ranked.begin()->first + alike) break;
    close.push_back(name);
  }
  std::string text;
  for (std::size_t at = 0; at < close.size(); ++at)
    text += (at == 0 ? "; did you mean " : at + 1 == close.size() ? " or " : ", ") + close[at];
  return text.empty() ? text : text + "?";
}
