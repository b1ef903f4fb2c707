#include "welch.h"

#include <cmath>

#include "student.h"

Difference welch(const MeanEstimate& base, const MeanEstimate& fresh) {
  Difference result{.estimate = fresh.mean - base.mean};
  const double variance = base.variance + fresh.variance;
  if (variance <= 0) {
    result.low = result.high = result.estimate;
    result.p = result.estimate == 0 ? 1 : 0;
    return result;
  }
  const double freedom = variance * variance /
                         (base.variance * base.variance / base.freedom +
                          fresh.variance * fresh.variance / fresh.freedom);
  const double error = std::sqrt(variance);
  const double reach = error * studentBound(intervalError, freedom);
  result.low = result.estimate - reach;
  result.high = result.estimate + reach;
  result.p = studentTwoSided(result.estimate / error, freedom);
  return result;
}
