#pragma once

#include "difference.h"

/// A side's mean and how well it is known.
struct MeanEstimate {
  double mean = 0;
  double variance = 0;  ///< of the mean
  double freedom = 1;   ///< degrees of freedom of that variance
};

/// Welch's comparison of two means whose variances are not taken to be equal. Two means without
/// variance are equal or differ beyond doubt.
Difference welch(const MeanEstimate& base, const MeanEstimate& fresh);
