#pragma once

#include "difference.h"

/// A side's mean and how well it is known.
struct MeanEstimate {
  double mean = 0;
  double variance = 0;  ///< of the mean
  double freedom = 1;   ///< degrees of freedom of that variance
};

/// By Student's t, from the variance of the difference and its degrees of freedom. Without variance
/// the means are equal or differ beyond doubt.
Difference differenceOfMeans(double base, double fresh, double variance, double freedom);

/// Welch's comparison of two means whose variances are not taken to be equal.
Difference welch(const MeanEstimate& base, const MeanEstimate& fresh);
