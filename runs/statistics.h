#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace runs {

/// Count, sum and range of samples, as exact as sums in double are.
struct Range {
  std::uint64_t count = 0;
  double sum = 0, min = 0, max = 0;

  void add(double value) {
    if (count == 0 || value < min) min = value;
    if (count == 0 || value > max) max = value;
    sum += value;
    ++count;
  }
  void merge(const Range& other);
  /// 0 without samples.
  double mean() const { return count == 0 ? 0 : sum / double(count); }
};

/// A range with its percentiles. Samples are counted by the upper 16 bits of their 32-bit float: a
/// cell is at most 1/128 of its values wide.
class Statistics {
 public:
  /// What is not finite is no sample.
  void add(double value);
  void merge(const Statistics& other);

  const Range& range() const { return range_; }
  std::uint64_t count() const { return range_.count; }
  double sum() const { return range_.sum; }
  double min() const { return range_.min; }
  double max() const { return range_.max; }
  double mean() const { return range_.mean(); }
  /// The value below or at which the share `p` (0 to 1) of the samples is, off by at most 0.4 %;
  /// exact where a cell holds samples of one value. 0 without samples.
  double quantile(double p) const;

  /// Samples that lie close together.
  struct Cell {
    float low = 0, high = 0;
    std::uint32_t count = 0;  // 0: unused
    std::uint16_t key = 0;
  };
  /// The cells in use, smallest values first.
  std::vector<Cell> cells() const;

 private:
  Cell& cellOf(std::uint16_t key);
  void grow();

  Range range_;
  std::vector<Cell> table_;  // by key, open addressing; its size is a power of two
  std::size_t used_ = 0;
};

}  // namespace runs
