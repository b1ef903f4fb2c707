// Every number must come out as the C library reads and prints it, whichever way it takes: what the
// fuzz target compares, for fields of all kinds.

#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size);  // aborts where not

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

/// The bytes of a float among whose decimals halves of a hundredth are common.
std::string eighths() {
  const auto bytes = std::bit_cast<std::array<char, 4>>(float(below(1U << 24U)) / 8);
  return {bytes.data(), bytes.size()};
}

TEST(Numbers, AreReadAndPrintedAsTheCLibraryDoes) {
  for (int i = 0; i < NUMBERS_TRIED; ++i) {
    const auto text = i % 4 == 0 ? eighths() : field();
    ASSERT_EQ(LLVMFuzzerTestOneInput(text.data(), text.size()), 0);
  }
}

}  // namespace
