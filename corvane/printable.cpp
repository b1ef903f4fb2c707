#include "printable.h"

#include <algorithm>
#include <cstdint>

namespace {

/// One character's code and bytes; a length of 0 where there is none.
struct Character {
  std::uint32_t code = 0;
  std::size_t length = 0;
};

Character firstOf(std::string_view text) {
  const auto lead = static_cast<unsigned char>(text.front());
  if (lead < 0x80) return {lead, 1};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {};
  std::uint32_t code = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[i]);
    if ((next & 0xC0U) != 0x80) return {};
    code = code << 6U | (next & 0x3FU);
  }
  constexpr std::uint32_t least[]{0, 0, 0x80, 0x800, 0x10000};
  const bool valid = code >= least[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
  return valid ? Character{code, length} : Character{};
}

bool isControl(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x061C ||
         (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF;
}

/// Appends the first character, or what stands for it; returns the bytes that it took.
std::size_t appendFirst(std::string& to, std::string_view text) {
  const auto character = firstOf(text);
  if (character.length == 0 || isControl(character.code)) {
    to += '?';
  } else {
    to += text.substr(0, character.length);
  }
  return std::max<std::size_t>(1, character.length);
}

}  // namespace

std::string printable(std::string_view text) {
  std::string safe;
  while (!text.empty())
    text.remove_prefix(appendFirst(safe, text));
  return safe;
}

std::string printable(std::string_view text, std::size_t width) {
  std::string safe;
  std::size_t count = 0, beforeLast = 0;
  for (; !text.empty() && count < width; ++count) {
    beforeLast = safe.size();
    text.remove_prefix(appendFirst(safe, text));
  }
  if (!text.empty() && width != 0) {
    safe.resize(beforeLast);
    safe += '~';
  }
  return safe.append(width - count, ' ');
}
