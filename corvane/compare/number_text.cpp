#include "number_text.h"

#include <cmath>
#include <cstdio>

std::string numberText(double value) {
  char text[40];
  const double size = std::abs(value);
  const int decimals = size >= 1000 ? 0 : size >= 100 ? 1 : size >= 10 ? 2 : size >= 1 ? 3 : 4;
  std::snprintf(text, sizeof text, "%.*f", value == 0 ? 0 : decimals, value);
  return text;
}

std::string changeText(double base, double fresh) {
  if (base == 0) return fresh == 0 ? "" : "from 0";
  const double percent = (fresh - base) / std::abs(base) * 100;
  char text[40];
  std::snprintf(text, sizeof text, std::abs(percent) < 999.5 ? "%+.1f%%" : "%+.0f%%", percent);
  return text;
}
