// A field as the CSV and the summary read it, and the first four bytes as a float that is printed.

#include <cstring>

#include "numbers.h"
#include "plain_convert.h"
#include "same.h"

namespace {

std::string twoDecimals(float value) {
  char text[twoDecimalsRoom];
  return {text, putTwoDecimals(text, value)};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
  const std::string field(data, size);
  expectSame(toFloat(field), plain::number(field), "number");
  char text[twoDecimalsRoom];
  char* const end = putNumber(text, field);
  expectSame(end != nullptr ? std::string(text, std::size_t(end - text)) : field,
             plain::csvField(field), "csv");
  expectSame(toSample(field), plain::sample(field), "sample");
  float value = 0;
  std::memcpy(&value, data, std::min(size, sizeof value));
  char expected[twoDecimalsRoom];
  std::snprintf(expected, sizeof expected, "%.2f", double(value));
  expectSame(twoDecimals(value), expected, "two decimals");
  return 0;
}
