// Every number must come out as the C library reads and prints it, whichever way it takes.

#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <string>

#include "numbers.h"

namespace {

std::mt19937_64 random64(20250131);

std::size_t below(std::size_t limit) {
  return random64() % limit;
}

std::string digits(std::size_t count) {
  std::string text;
  while (count-- > 0)
    text += char('0' + below(10));
  return text;
}

std::string decimal() {
  return digits(below(19)) + "." + digits(below(19));
}

std::string print(const char* format, double value) {
  std::array<char, 400> text;
  return {text.data(), std::size_t(std::snprintf(text.data(), text.size(), format, value))};
}

/// Half-way between two neighbouring floats, where the last digits decide; or just beside it.
std::string halfWay() {
  const auto value = std::bit_cast<float>(std::uint32_t(below(0x40) + 0x60) << 23U |
                                          std::uint32_t(below(1U << 23U)));
  const double middle = (double(value) + double(std::nextafter(value, INFINITY))) / 2;
  return print(below(2) == 0 ? "%.16g" : "%.60f", middle) + (below(2) == 0 ? "" : digits(2));
}

std::string field() {
  static const std::array<const char*, 12> odd{"inf",      "-Infinity", "nan",  "nan(12)",
                                               "0x1.8p-3", "0x",        "+.5e", "\t4",
                                               "-",        "1e400",     "i",    "--1"};
  static const std::array<const char*, 6> sign{"", "", "", "-", "+", "- "};
  switch (below(9)) {
    case 0:
      return sign[below(6)] + digits(below(25));
    case 1:
      return sign[below(6)] + decimal();
    case 2:
      return sign[below(6)] + digits(1 + below(8)) + "." + digits(2);
    case 3:
      return sign[below(6)] + decimal() + "e" + std::to_string(int(below(100)) - 50);
    case 4:
      return halfWay();
    case 5:
      return print("%.9g", double(std::bit_cast<float>(std::uint32_t(random64()))));
    case 6:
      return print("%a", std::bit_cast<double>(random64()));
    case 7:
      return odd[below(odd.size())] + digits(below(3));
    default:
      return digits(below(3)) + char(below(256)) + digits(below(3));
  }
}

std::string twoDecimals(float value) {
  std::array<char, twoDecimalsRoom> text;
  return {text.data(), putTwoDecimals(text.data(), value)};
}

/// The field in the CSV: two decimals, or as it is.
std::string csvField(const std::string& field) {
  std::array<char, twoDecimalsRoom> text;
  char* const end = putNumber(text.data(), field);
  return end == nullptr ? field : std::string(text.data(), end);
}

/// The bits, so that two that are not a number compare, and 0 is not -0.
std::optional<std::uint32_t> bits(std::optional<float> value) {
  return value ? std::optional(std::bit_cast<std::uint32_t>(*value)) : std::nullopt;
}

std::optional<float> strtofValue(const std::string& field) {
  char* end = nullptr;
  errno = 0;
  const float value = std::strtof(field.c_str(), &end);
  return end == field.c_str() || errno == ERANGE ? std::nullopt : std::optional(value);
}

TEST(Numbers, AreReadAsTheCLibraryReadsThem) {
  for (int i = 0; i < 2'000'000; ++i) {
    const auto text = field();
    const auto expected = strtofValue(text);
    ASSERT_EQ(bits(toFloat(text)), bits(expected)) << text;
    ASSERT_EQ(csvField(text), expected ? print("%.2f", double(*expected)) : text);
    ASSERT_EQ(bits(toSample(text)), bits(float(std::atof(text.c_str())))) << text;
  }
}

TEST(Numbers, ArePrintedAsTheCLibraryPrintsThem) {
  for (int i = 0; i < 500'000; ++i) {
    const auto any = std::bit_cast<float>(std::uint32_t(random64()));
    const float eighths = float(below(1U << 24U)) / 8;  // halves of a hundredth among them
    ASSERT_EQ(twoDecimals(any), print("%.2f", double(any))) << print("%a", double(any));
    ASSERT_EQ(twoDecimals(eighths), print("%.2f", double(eighths)));
  }
}

}  // namespace
