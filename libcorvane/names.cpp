#include "names.h"

#include <algorithm>

namespace {

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Bytes of the well-formed UTF-8 character at the start of `text`; 0 where there is none.
std::size_t characterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  if (!std::all_of(text.begin() + 1, text.begin() + std::ptrdiff_t(length), isContinuation))
    return 0;
  // Overlong forms, surrogates and what lies beyond the last code point.
  const bool bad = (first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F) ||
                   (first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F);
  return bad ? 0 : length;
}

/// Whether a character can neither end a line, for any reader, nor steer a terminal, nor break a
/// field of the CSV or a string of the trace.
bool isHarmless(std::string_view character) {
  if (character.size() == 1) {
    const auto byte = static_cast<unsigned char>(character[0]);
    return byte >= 0x20 && byte != 0x7F && byte != '"' && byte != '\\' && byte != ',';
  }
  const bool isControl = character >= "\xC2\x80" && character < "\xC2\xA0";  // as U+0085
  return !isControl && character != "\u2028" && character != "\u2029";
}

}  // namespace

std::string safeName(std::string_view name, std::size_t longest) {
  if (name.empty()) return "_";
  std::string safe;
  safe.reserve(name.size());
  while (!name.empty()) {
    const std::size_t length = characterLength(name);
    const auto character = name.substr(0, length);
    if (length == 0 || !isHarmless(character)) {
      safe += '_';
    } else {
      safe += character;
    }
    name.remove_prefix(std::max<std::size_t>(length, 1));
  }
  if (safe.size() <= longest) return safe;
  std::size_t headEnd = (longest - 2) / 2;
  std::size_t tailStart = safe.size() - (longest - 2 - headEnd);
  while (isContinuation(safe[headEnd]))
    --headEnd;
  while (tailStart < safe.size() && isContinuation(safe[tailStart]))
    ++tailStart;
  return safe.substr(0, headEnd) + ".." + safe.substr(tailStart);
}
