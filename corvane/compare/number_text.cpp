#include "number_text.h"

#include <cmath>
#include <cstdio>

#include "difference.h"

std::string numberText(double value) {
  char text[40];
  const double size = std::abs(value);
  const int decimals = size >= 1000 ? 0 : size >= 100 ? 1 : size >= 10 ? 2 : size >= 1 ? 3 : 4;
  std::snprintf(text, sizeof text, "%.*f", value == 0 ? 0 : decimals, value);
  return text;
}

std::string changeText(double base, double fresh) {
  const auto percent = percentChange(base, fresh);
  if (!percent) return fresh == 0 ? "" : "from 0";
  char text[40];
  std::snprintf(text, sizeof text, std::abs(*percent) < 999.5 ? "%+.1f%%" : "%+.0f%%", *percent);
  return text;
}
