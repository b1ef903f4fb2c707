#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

// Parsing in place, without copies: each call takes a piece off the front of `text`.

/// The next line without its end; false when nothing is left.
inline bool nextLine(std::string_view& text, std::string_view& line) {
  if (text.empty()) return false;
  const auto end = text.find('\n');
  line = text.substr(0, end);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return true;
}

/// The next word, between blanks and tabs; empty when nothing is left.
inline std::string_view nextWord(std::string_view& text) {
  const auto start = text.find_first_not_of(" \t\n");
  if (start == std::string_view::npos) return text = {};
  const auto end = text.find_first_of(" \t\n", start);
  const auto word = text.substr(start, end - start);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end);
  return word;
}

/// A word as a decimal number; nothing unless all of it is one that fits.
template <class Number = std::uint64_t>
std::optional<Number> toNumber(std::string_view word) {
  Number value{};
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  if (error != std::errc{} || end != word.data() + word.size()) return std::nullopt;
  return value;
}

/// The next word as a number; the word is taken in any case.
template <class Number = std::uint64_t>
std::optional<Number> nextNumber(std::string_view& text) {
  return toNumber<Number>(nextWord(text));
}
