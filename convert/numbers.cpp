#include "numbers.h"

#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

/// Whole numbers up to here are doubles, and so are the powers of ten up to 10^22: the quotient of
/// two doubles is rounded once, so it is the double nearest to the decimal number.
constexpr std::int64_t exactLimit = std::int64_t{1} << 53U;
constexpr std::array<double, 20> powersOfTen{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,
                                             1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13,
                                             1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
constexpr std::ptrdiff_t maxDigits = 18;  // of any digits as many fit in 64 bits

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

const char* addDigits(const char* at, const char* end, std::uint64_t& number) {
  for (; at != end && isDigit(*at); ++at)
    number = number * 10 + std::uint64_t(*at - '0');
  return at;
}

/// A decimal number whose digits, without the point, are an exact double.
struct Decimal {
  std::int64_t digits;
  std::size_t decimals;
  bool negative;
};

/// A plain field; nothing where the C library has to say.
std::optional<Decimal> parseDecimal(std::string_view field) {
  const char* at = field.data();
  const char* const end = at + field.size();
  const bool negative = at != end && *at == '-';
  if (negative) ++at;
  std::uint64_t number = 0;
  const char* const start = at;
  at = addDigits(at, end, number);
  std::ptrdiff_t digits = at - start;
  std::ptrdiff_t decimals = 0;
  if (at != end && *at == '.') {
    const char* const point = at + 1;
    at = addDigits(point, end, number);
    decimals = at - point;
    digits += decimals;
  }
  if (at != end || digits == 0 || digits > maxDigits) return std::nullopt;
  const Decimal decimal{
      .digits = std::int64_t(number), .decimals = std::size_t(decimals), .negative = negative};
  return decimal.digits > exactLimit ? std::nullopt : std::optional(decimal);
}

/// The nearest double.
double valueOf(const Decimal& decimal) {
  const double value = double(decimal.digits) / powersOfTen[decimal.decimals];
  return decimal.negative ? -value : value;
}

/// No number begins with what is not one of these.
bool mayBeginNumber(std::string_view field) {
  return !field.empty() &&
         std::string_view("0123456789.+-iInN \t\n\v\f\r").find(field[0]) != std::string_view::npos;
}

/// Whether the double lies half-way between two floats, where the decimal number that was rounded
/// to it decides the direction.
bool isHalfWay(double value) {
  constexpr std::uint64_t lost = (std::uint64_t{1} << 29U) - 1;
  return (std::bit_cast<std::uint64_t>(value) & lost) == (lost >> 1U) + 1;
}

std::optional<float> toFloat(const std::optional<Decimal>& plain, std::string_view field) {
  if (plain) {
    const double value = valueOf(*plain);
    if (!isHalfWay(value)) return float(value);
  }
  if (!mayBeginNumber(field)) return std::nullopt;
  const std::string text(field);
  char* end = nullptr;
  errno = 0;
  const float value = std::strtof(text.c_str(), &end);
  if (end == text.c_str() || errno == ERANGE) return std::nullopt;
  return value;
}

char* putHundredths(char* to, bool negative, std::uint64_t hundredths) {
  if (negative) *to++ = '-';
  to = std::to_chars(to, to + twoDecimalsRoom, hundredths / 100).ptr;
  *to++ = '.';
  *to++ = char('0' + hundredths / 10 % 10);
  *to++ = char('0' + hundredths % 10);
  return to;
}

/// A number of so few digits that, as the nearest float, it is less than half a hundredth off: its
/// text with two decimals is its own. Null for others.
char* putShort(char* to, const Decimal& decimal) {
  constexpr std::array<std::int64_t, 3> factors{100, 10, 1};
  constexpr std::int64_t limit = std::int64_t{1} << 23U;
  if (decimal.decimals >= factors.size() || decimal.digits >= limit) return nullptr;
  const auto hundredths = decimal.digits * factors[decimal.decimals];
  if (hundredths >= limit) return nullptr;
  return putHundredths(to, decimal.negative, std::uint64_t(hundredths));
}

}  // namespace

std::optional<float> toFloat(std::string_view field) {
  return toFloat(parseDecimal(field), field);
}

std::optional<double> toDouble(std::string_view field) {
  if (const auto plain = parseDecimal(field)) return valueOf(*plain);
  if (!mayBeginNumber(field)) return std::nullopt;
  const std::string text(field);
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size()) return std::nullopt;
  return value;
}

float toSample(std::string_view field) {
  if (const auto plain = parseDecimal(field)) return float(valueOf(*plain));
  if (!mayBeginNumber(field)) return 0;
  return float(std::atof(std::string(field).c_str()));
}

char* putTwoDecimals(char* to, float value) {
  // A hundred floats are a double without rounding; beyond 2^51 it would have no room for halves.
  const double hundredths = std::fabs(double(value)) * 100;
  if (!(hundredths < 0x1p51)) return to + std::snprintf(to, twoDecimalsRoom, "%.2f", double(value));
  // Adding 2^52 leaves whole numbers only, rounded half to even as printf does.
  const auto rounded = std::uint64_t(hundredths + 0x1p52) - (std::uint64_t{1} << 52U);
  return putHundredths(to, std::signbit(value), rounded);
}

char* putNumber(char* to, std::string_view field) {
  const auto plain = parseDecimal(field);
  char* const end = plain ? putShort(to, *plain) : nullptr;
  if (end != nullptr) return end;
  const auto value = toFloat(plain, field);
  return value ? putTwoDecimals(to, *value) : nullptr;
}
