#include "figures.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "batch_means.h"

namespace {

using runs::Envelope;

/// The series at equal distances in time: its samples, or the means of its buckets.
std::vector<double> evenValues(const Envelope& envelope) {
  std::vector<double> values;
  for (const auto& sample : envelope.samples())
    values.push_back(sample.value);
  for (const auto& bucket : envelope.buckets()) {
    if (bucket.count != 0) values.push_back(bucket.sum / bucket.count);
  }
  return values;
}

/// The samples of the source that lists the processes, over which every name is spread out.
struct Listing {
  double first = 0, period = 0;
  std::size_t samples = 0;
};

Listing listingOf(const runs::RunSummary& run, std::string_view word) {
  for (const auto& source : run.sources) {
    if (source.word != word || source.samples == 0) continue;
    const auto steps = double(source.samples - 1);
    return {.first = source.first,
            .period = steps > 0 ? (source.last - source.first) / steps : 0,
            .samples = std::size_t(source.samples)};
  }
  return {};
}

/// The name's value at each of the listing's samples.
std::vector<double> spreadSamples(const Envelope& envelope, const Listing& listing) {
  std::vector<double> values(listing.samples);
  for (const auto& sample : envelope.samples()) {
    const double steps = listing.period > 0 ? (sample.time - listing.first) / listing.period : 0;
    const auto last = double(values.size() - 1);
    values[std::size_t(std::clamp(std::round(steps), 0.0, last))] += sample.value;
  }
  return values;
}

/// The name's mean in each stretch as wide as its buckets. A stretch in which the listing has more
/// samples than the name is filled up with 0.
std::vector<double> spreadBuckets(const Envelope& envelope, const Listing& listing) {
  const double width = envelope.bucketSeconds();
  const double end = listing.first + listing.period * double(listing.samples - 1);
  const auto before = std::ptrdiff_t(std::floor(listing.first / width) -
                                     std::round(envelope.firstBucket() / width));
  const auto count = std::size_t(std::floor(end / width) - std::floor(listing.first / width)) + 1;
  const auto buckets = envelope.buckets();
  // One sample less is no gap: a stretch need not hold a whole number of periods.
  const double usual = std::floor(width / listing.period);
  std::vector<double> values(count);
  for (std::size_t place = 0; place < count; ++place) {
    const auto bucket = std::ptrdiff_t(place) + before;
    if (bucket < 0 || bucket >= std::ptrdiff_t(buckets.size())) continue;
    const auto& found = buckets[std::size_t(bucket)];
    const bool cut = place == 0 || place + 1 == count;
    const double samples = cut ? found.count : std::max(double(found.count), usual);
    if (found.count != 0) values[place] = found.sum / samples;
  }
  return values;
}

double sumOf(const Envelope& envelope) {
  double sum = 0;
  for (const auto& sample : envelope.samples())
    sum += sample.value;
  for (const auto& bucket : envelope.buckets())
    sum += bucket.sum;
  return sum;
}

/// The exact mean with the spread that the series shows.
Figure figureOf(FigureKey key, double mean, const std::vector<double>& values) {
  Figure figure{.key = std::move(key), .mean = mean, .estimate = meanByBatches(values)};
  if (figure.estimate) figure.estimate->mean = mean;
  return figure;
}

void addName(std::vector<Figure>& figures, const Listing& listing, const Envelope& envelope,
             FigureKey key) {
  if (envelope.empty() || listing.samples == 0) return;
  figures.push_back(figureOf(
      std::move(key), sumOf(envelope) / double(listing.samples),
      envelope.exact() ? spreadSamples(envelope, listing) : spreadBuckets(envelope, listing)));
}

}  // namespace

std::vector<Figure> figuresOf(const runs::RunSummary& run) {
  std::vector<Figure> figures;
  figures.reserve(run.metrics.size() + 2 * run.names.size());
  for (const auto& series : run.metrics) {
    figures.push_back(figureOf({series.source, series.entity, series.metric, series.unit},
                               series.statistics.mean(), evenValues(series.envelope)));
  }
  const auto usage = listingOf(run, "proc");
  const auto memory = listingOf(run, "procmem");
  for (const auto& name : run.names) {
    addName(figures, usage, name.cpuEnvelope, {"proc", name.name, "CPU_Usage", "%"});
    addName(figures, memory, name.pssEnvelope, {"procmem", name.name, "PSS", "KB"});
  }
  return figures;
}
