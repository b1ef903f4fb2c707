#pragma once

/// What two sides tell of the difference of their means (or typical values), new minus base.
struct Difference {
  double estimate = 0;
  double low = 0, high = 0;  ///< bound it with 95 % confidence
  double p = 1;              ///< probability of one at least as large where there is none
};

/// The confidence of every interval: 1 - 0.05.
inline constexpr double intervalError = 0.05;
