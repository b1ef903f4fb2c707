#include "envelope.h"

#include <algorithm>
#include <cmath>

namespace runs {

namespace {

std::int64_t microsecondsOf(double seconds) {
  return std::int64_t(std::floor(std::clamp(seconds, 0.0, 1e12) * 1e6 + 0.5));
}

void mergeInto(Envelope::Bucket& bucket, const Envelope::Bucket& other) {
  if (other.count == 0) return;
  bucket.min = bucket.count == 0 ? other.min : std::min(bucket.min, other.min);
  bucket.max = bucket.count == 0 ? other.max : std::max(bucket.max, other.max);
  bucket.sum += other.sum;
  bucket.count += other.count;
}

}  // namespace

void Envelope::add(double time, double value) {
  if (!exact()) {
    addToBucket(microsecondsOf(time), value);
    return;
  }
  if (samples_.size() == samples_.capacity())
    samples_.reserve(std::min(capacity_ + 1, std::max<std::size_t>(8, samples_.size() * 2)));
  samples_.push_back({time, value});
  if (samples_.size() > capacity_) beginBuckets();
}

void Envelope::coarsen(std::size_t capacity) {
  if (capacity >= capacity_) return;
  capacity_ = capacity;
  if (samples_.size() > capacity_) beginBuckets();
  while (buckets_.size() > capacity_)
    halve();
  buckets_.shrink_to_fit();
}

void Envelope::beginBuckets() {
  const auto first = microsecondsOf(samples_.front().time);
  const auto last = std::max(first, microsecondsOf(samples_.back().time));
  while (std::size_t((last >> shift_) - (first >> shift_)) >= capacity_)
    ++shift_;
  first_ = first >> shift_;
  buckets_.reserve(capacity_);
  for (const auto& sample : samples_)
    addToBucket(microsecondsOf(sample.time), sample.value);
  samples_ = {};
}

void Envelope::addToBucket(std::int64_t microseconds, double value) {
  while ((microseconds >> shift_) - first_ >= std::int64_t(capacity_))
    halve();
  const auto place = std::size_t(std::max<std::int64_t>(0, (microseconds >> shift_) - first_));
  if (place >= buckets_.size()) buckets_.resize(place + 1);
  const auto narrow = float(value);
  mergeInto(buckets_[place], {.sum = value, .min = narrow, .max = narrow, .count = 1});
}

/// Doubles the width.
void Envelope::halve() {
  const bool odd = (first_ & 1) != 0;
  std::size_t kept = 0;
  for (std::size_t from = 0; from < buckets_.size(); ++kept) {
    Bucket bucket = buckets_[from++];
    const bool alone = odd && kept == 0;
    if (!alone && from < buckets_.size()) mergeInto(bucket, buckets_[from++]);
    buckets_[kept] = bucket;
  }
  buckets_.resize(kept);
  first_ >>= 1;
  ++shift_;
}

}  // namespace runs
