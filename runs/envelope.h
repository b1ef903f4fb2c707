#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace runs {

/// A series over time in bounded memory: the samples themselves while they are few, then their
/// least, largest, sum and count in buckets, which double their width whenever they become too
/// many. Widths are powers of two of a microsecond and buckets begin at multiples of their width,
/// so that the buckets of two series fit each other.
class Envelope {
 public:
  static constexpr std::size_t usualCapacity = 2048;
  /// For what there may be thousands of: all of them, and those that are looked at first.
  static constexpr std::size_t smallCapacity = 128;
  static constexpr std::size_t detailedCapacity = 1024;

  struct Sample {
    double time;  // seconds of the run
    double value;
  };
  struct Bucket {
    double sum = 0;
    float min = 0, max = 0;
    std::uint32_t count = 0;  // 0: no sample in it, and no values
  };

  explicit Envelope(std::size_t capacity = usualCapacity) : capacity_(capacity) {}

  /// A sample that is not earlier than the one before.
  void add(double time, double value);
  /// Makes do with no more than `capacity` from now on.
  void coarsen(std::size_t capacity);

  bool empty() const { return samples_.empty() && buckets_.empty(); }
  bool exact() const { return buckets_.empty(); }
  /// Samples or buckets that are held.
  std::size_t size() const { return samples_.size() + buckets_.size(); }
  /// All samples where they are exact; else none.
  std::span<const Sample> samples() const { return samples_; }
  /// The buckets where the samples are not exact; else none. The first one begins at firstBucket().
  std::span<const Bucket> buckets() const { return buckets_; }
  double bucketSeconds() const { return double(std::int64_t{1} << shift_) / 1e6; }
  double firstBucket() const { return double(first_ << shift_) / 1e6; }

 private:
  void beginBuckets();
  void addToBucket(std::int64_t microseconds, double value);
  void halve();

  std::size_t capacity_;
  unsigned shift_ = 0;      // a bucket is 2^shift microseconds wide
  std::int64_t first_ = 0;  // the first bucket's begin in widths
  std::vector<Sample> samples_;
  std::vector<Bucket> buckets_;
};

}  // namespace runs
