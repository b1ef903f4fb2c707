#include "fields.h"

#include <bit>
#include <cstdint>
#include <cstring>

// Columns are right-aligned and 10 to 40 wide, so a line is mostly blanks: eight bytes a step.

namespace {

constexpr std::uint64_t eightBlanks = 0x2020202020202020;

static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");

std::uint64_t eightBytes(const char* at) {
  std::uint64_t bytes = 0;
  std::memcpy(&bytes, at, sizeof bytes);
  return bytes;
}

/// The first byte whose bits in `marks` are not all zero.
std::ptrdiff_t firstMarked(std::uint64_t marks) {
  return std::countr_zero(marks) / 8;
}

/// 0x80 in every zero byte. A byte above the first zero byte may be marked falsely.
std::uint64_t zeroBytes(std::uint64_t bytes) {
  return (bytes - 0x0101010101010101) & ~bytes & 0x8080808080808080;
}

const char* skipBlanks(const char* at, const char* end) {
  for (; end - at >= 8; at += 8) {
    const auto others = eightBytes(at) ^ eightBlanks;
    if (others != 0) return at + firstMarked(others);
  }
  while (at != end && *at == ' ')
    ++at;
  return at;
}

const char* findBlank(const char* at, const char* end) {
  for (; end - at >= 8; at += 8) {
    const auto blanks = zeroBytes(eightBytes(at) ^ eightBlanks);
    if (blanks != 0) return at + firstMarked(blanks);
  }
  while (at != end && *at != ' ')
    ++at;
  return at;
}

}  // namespace

void cutFields(std::string_view line, Fields& fields) {
  fields.clear();
  const char* at = line.data();
  const char* const end = at + line.size();
  for (at = skipBlanks(at, end); at != end; at = skipBlanks(at, end)) {
    const char* const start = at;
    at = findBlank(at, end);
    fields.emplace_back(start, std::size_t(at - start));
  }
}
