#include "student.h"

#include <algorithm>
#include <cmath>

namespace {

/// Half a step of a continued fraction by Lentz's method: `c` and `d` are the quotients of its
/// numerators and of its denominators.
double lentzFactor(double term, double& c, double& d) {
  constexpr double tiny = 1e-300;  // in place of a zero that would be divided by
  d = 1 + term * d;
  c = 1 + term / c;
  if (std::abs(d) < tiny) d = tiny;
  if (std::abs(c) < tiny) c = tiny;
  d = 1 / d;
  return c * d;
}

/// The continued fraction of the incomplete beta function; converges fast for
/// x < (a + 1) / (a + b + 2).
double betaFraction(double x, double a, double b) {
  constexpr int mostSteps = 1000;
  constexpr double enough = 1e-15;
  double c = 1;
  double d = 1 / (1 - (a + b) * x / (a + 1));  // above 0 for such an x
  double value = d;
  for (int m = 1; m <= mostSteps; ++m) {
    const double at = a + 2.0 * m;
    value *= lentzFactor(m * (b - m) * x / ((at - 1) * at), c, d);
    const double factor = lentzFactor(-(a + m) * (a + b + m) * x / (at * (at + 1)), c, d);
    value *= factor;
    if (std::abs(factor - 1) < enough) break;
  }
  return value;
}

/// lgamma() of the C library writes a global that threads share; its reentrant form is no standard.
double logGamma(double x) {
  int sign = 0;
  return ::lgamma_r(x, &sign);
}

/// The regularised incomplete beta function.
double incompleteBeta(double x, double a, double b) {
  if (x <= 0) return 0;
  if (x >= 1) return 1;
  const double front =
      std::exp(logGamma(a + b) - logGamma(a) - logGamma(b) + a * std::log(x) + b * std::log1p(-x));
  if (x < (a + 1) / (a + b + 2)) return front * betaFraction(x, a, b) / a;
  return 1 - front * betaFraction(1 - x, b, a) / b;
}

}  // namespace

double studentTwoSided(double t, double freedom) {
  return incompleteBeta(freedom / (freedom + t * t), freedom / 2, 0.5);
}

double studentBound(double p, double freedom) {
  double low = 0;
  double high = 1;
  while (studentTwoSided(high, freedom) > p && high < 1e12)
    high *= 2;
  for (int halvings = 0; halvings < 200 && high - low > 1e-14 * high; ++halvings) {
    const double middle = (low + high) / 2;
    (studentTwoSided(middle, freedom) > p ? low : high) = middle;
  }
  return (low + high) / 2;
}
