#include "welch.h"

#include <cmath>

#include "student.h"

Difference differenceOfMeans(double base, double fresh, double variance, double freedom) {
  Difference result{.estimate = fresh - base};
  if (variance <= 0) {
    result.low = result.high = result.estimate;
    result.p = result.estimate == 0 ? 1 : 0;
    return result;
  }
  const double error = std::sqrt(variance);
  const double reach = error * studentBound(intervalError, freedom);
  result.low = result.estimate - reach;
  result.high = result.estimate + reach;
  result.p = studentTwoSided(result.estimate / error, freedom);
  return result;
}

Difference welch(const MeanEstimate& base, const MeanEstimate& fresh) {
  const double variance = base.variance + fresh.variance;
  const double freedom = variance * variance /
                         (base.variance * base.variance / base.freedom +
                          fresh.variance * fresh.variance / fresh.freedom);
  return differenceOfMeans(base.mean, fresh.mean, variance, freedom);
}
