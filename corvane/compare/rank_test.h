#pragma once

#include <span>

#include "difference.h"

/// The comparison of two sets of independent values by ranks, which no outlier upsets: the
/// Hodges-Lehmann estimate of the shift from base to new, its interval, and the two-sided
/// probability of the Mann-Whitney test. Exact for up to 40 values together (with ties: among all
/// ways to deal out these values), by the normal approximation with corrections for continuity and
/// ties above. Neither side may be empty. With three against three values and fewer no difference
/// can be told from chance; the interval is then the range of all differences.
Difference compareByRanks(std::span<const double> base, std::span<const double> fresh);
