#include "names.h"

#include <algorithm>
#include <iterator>

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

/// The code point of a well-formed character.
char32_t decoded(std::string_view character) {
  constexpr unsigned firstByteBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  auto point = char32_t(static_cast<unsigned char>(character[0]) & firstByteBits[character.size()]);
  for (const char byte : character.substr(1))
    point = point << 6 | (static_cast<unsigned char>(byte) & 0x3FU);
  return point;
}

struct Range {
  char32_t first, last;
};

/// Characters that end a line for some reader, steer a terminal, turn the direction of what
/// follows, or cannot be seen: controls, blanks and what Unicode has shown as nothing by default.
constexpr Range unseen[] = {
    {0x0080, 0x00A0},   {0x00AD, 0x00AD}, {0x034F, 0x034F}, {0x061C, 0x061C},   {0x115F, 0x1160},
    {0x1680, 0x1680},   {0x17B4, 0x17B5}, {0x180B, 0x180F}, {0x2000, 0x200F},   {0x2028, 0x202F},
    {0x205F, 0x206F},   {0x2800, 0x2800}, {0x3000, 0x3000}, {0x3164, 0x3164},   {0xFE00, 0xFE0F},
    {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFB}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A},
    {0xE0000, 0xE0FFF},
};

/// Whether a character can neither end a line, for any reader, nor steer a terminal, nor break a
/// field of the CSV or a string of the trace, nor hide.
bool isHarmless(std::string_view character) {
  if (character.size() == 1) {
    const auto byte = static_cast<unsigned char>(character[0]);
    return byte >= 0x20 && byte != 0x7F && byte != '"' && byte != '\\' && byte != ',';
  }
  const auto point = decoded(character);
  const auto range = std::ranges::lower_bound(unseen, point, {}, &Range::last);
  return range == std::end(unseen) || point < range->first;
}

bool isPlainWord(std::string_view text) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  const auto isPlain = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '_'; };
  return !text.empty() && isLetter(text[0]) && std::ranges::all_of(text, isPlain);
}

/// Whether a spreadsheet would take the name for something to work out. The name of a login shell,
/// as "-bash", is none.
bool looksLikeFormula(std::string_view name) {
  return name[0] == '=' || name[0] == '+' || name[0] == '@' ||
         (name[0] == '-' && !isPlainWord(name.substr(1)));
}

}  // namespace

std::string safeName(std::string_view name, std::size_t longest) {
  if (name.empty()) return "_";
  std::string safe;
  safe.reserve(name.size());
  if (looksLikeFormula(name)) {
    safe = '_';
    name.remove_prefix(1);
  }
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
