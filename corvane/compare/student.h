#pragma once

/// Probability that Student's t with `freedom` degrees of freedom (above 0, any real number) lies
/// beyond `t` on either side.
double studentTwoSided(double t, double freedom);

/// The t that is exceeded on either side with probability `p` together (0 < p < 1): 2.2281 for 0.05
/// and 10 degrees of freedom.
double studentBound(double p, double freedom);
