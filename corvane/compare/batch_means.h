#pragma once

#include <optional>
#include <span>

#include "welch.h"

/// Fewer independent batches than these say nothing of a mean.
inline constexpr int fewestBatches = 10;

/// The mean of a series of samples that follow each other closely, and its variance from the means
/// of consecutive batches. `samples` are at equal distances in time.
///
/// A batch is as long as the time over which samples resemble each other: (1 + r) / (1 - r) samples
/// with r their correlation from one to the next, freed of the bias that short series have and
/// taken a standard error too high. What is left of the correlation from batch to batch widens the
/// variance and takes degrees of freedom. Where batches still resemble each other more than that
/// explains (a drift, a slow cycle), they are doubled. Nothing where fewer than `fewestBatches` are
/// left, or could be by the 95 % bound of the correlation.
std::optional<MeanEstimate> meanByBatches(std::span<const double> samples);
