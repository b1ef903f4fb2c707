#pragma once

#include <cmath>
#include <optional>

/// What two sides tell of the difference of their means (or typical values), new minus base.
struct Difference {
  double estimate = 0;
  double low = 0, high = 0;  ///< bound it with 95 % confidence
  double p = 1;              ///< probability of one at least as large where there is none
};

/// The change in percent of the base value; nothing where that is 0.
inline std::optional<double> percentChange(double base, double fresh) {
  if (base == 0) return std::nullopt;
  return (fresh - base) / std::abs(base) * 100;
}

/// The confidence of every interval: 1 - 0.05.
inline constexpr double intervalError = 0.05;
