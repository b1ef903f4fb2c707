#include "batch_means.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

double meanOf(std::span<const double> values) {
  double sum = 0;
  for (const double value : values)
    sum += value;
  return sum / double(values.size());
}

struct Spread {
  double variance = 0;     ///< of one value
  double correlation = 0;  ///< of a value with the next one, as it is found
};

Spread spreadOf(std::span<const double> values, double mean) {
  double squares = 0;
  double products = 0;
  double before = 0;
  for (const double value : values) {
    const double off = value - mean;
    squares += off * off;
    products += off * before;
    before = off;
  }
  if (squares <= 0) return {};
  return {.variance = squares / double(values.size() - 1), .correlation = products / squares};
}

/// A short series looks less correlated than it is, since its own mean follows its slow swings.
double withoutBias(double correlation, std::size_t count) {
  const auto n = double(count);
  return std::clamp((n * correlation + 1) / (n - 3), 0.0, 0.9999);
}

/// How much batches of a series still resemble each other in which each sample keeps the share `r`
/// of the one before it.
struct Resemblance {
  double next = 0;  ///< correlation with the next batch
  double sum = 0;   ///< of the correlations with all that follow
};

Resemblance leftBetweenBatches(double r, std::size_t length) {
  if (r <= 0) return {};
  const auto b = double(length);
  const double kept = std::pow(r, b);
  const double next = r * (1 - kept) * (1 - kept) / (b * (1 - r * r) - 2 * r * (1 - kept));
  return {.next = next, .sum = next / (1 - kept)};
}

std::vector<double> batchesOf(std::span<const double> samples, std::size_t length) {
  const std::size_t count = samples.size() / length;
  // What does not fill a batch is left out at the beginning, where a run is least itself.
  samples = samples.last(count * length);
  std::vector<double> batches(count);
  for (std::size_t number = 0; number < count; ++number)
    batches[number] = meanOf(samples.subspan(number * length, length));
  return batches;
}

}  // namespace

std::optional<MeanEstimate> meanByBatches(std::span<const double> samples) {
  constexpr auto fewest = std::size_t(fewestBatches);
  if (samples.size() < fewest) return std::nullopt;
  const double mean = meanOf(samples);
  const Spread spread = spreadOf(samples, mean);
  if (spread.variance <= 0)
    return MeanEstimate{.mean = mean, .freedom = double(samples.size() - 1)};

  const double found = withoutBias(spread.correlation, samples.size());
  const double error = std::sqrt((1 - found * found) / double(samples.size()));
  const double likely = std::min(found + error, 0.9999);
  // To be sure that there are enough at all, more of the doubt is taken for true.
  const double worst = std::min(found + 1.64 * error, 0.9999);
  if (double(samples.size()) * (1 - worst) / (1 + worst) < double(fewest)) return std::nullopt;
  for (auto length = std::size_t(std::ceil((1 + likely) / (1 - likely)));
       samples.size() / length >= fewest; length *= 2) {
    const auto batches = batchesOf(samples, length);
    const auto count = double(batches.size());
    const double batchMean = meanOf(batches);
    const Spread between = spreadOf(batches, batchMean);
    // Where only just enough batches are left, the correlation may well have been found too low:
    // else there would be fewer.
    const double scarcity = double(fewest) / count;
    const double caution = 1 + 1.5 * scarcity * scarcity;
    const auto left = leftBetweenBatches(std::min(found + caution * error, 0.9999), length);
    // Well beyond what is left: this is no series that only fades.
    if (withoutBias(between.correlation, batches.size()) > left.next + 1.5 / std::sqrt(count))
      continue;
    const double widened = (1 + 2 * left.sum) / (1 - 2 * left.sum / (count - 1));
    return MeanEstimate{.mean = batchMean,
                        .variance = between.variance / count * widened,
                        .freedom = (count - 1) / (1 + 2 * left.sum)};
  }
  return std::nullopt;
}
