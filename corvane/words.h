#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

/// What stands between any of the separators; an empty text is one empty word.
inline std::vector<std::string> split(std::string_view text, std::string_view separators) {
  std::vector<std::string> words;
  for (std::size_t at = 0; at <= text.size();) {
    const auto end = std::min(text.find_first_of(separators, at), text.size());
    words.emplace_back(text.substr(at, end - at));
    at = end + 1;
  }
  return words;
}

inline std::string joined(const std::vector<std::string>& words, std::string_view between) {
  std::string text;
  for (const auto& word : words)
    text.append(&word == words.data() ? "" : between).append(word);
  return text;
}
