#pragma once

#include <functional>
#include <map>
#include <string>

#include "kinds.h"
#include "result_rows.h"
#include "summary.h"

/// The samples of one metric, as they come: only what the table needs of them is kept.
class Series {
 public:
  void add(float sample) {
    if (count_ == 0) min_ = max_ = sample;
    if (sample < min_) min_ = sample;
    if (max_ < sample) max_ = sample;
    sum_ += double(sample);
    ++count_;
  }

  /// The mean is divided in 32 bits, so it can lie outside of the range of the samples.
  Summary summary(std::string name) const {
    return {.name = std::move(name), .min = min_, .max = max_, .avg = float(sum_) / float(count_)};
  }

 private:
  float min_ = 0, max_ = 0;
  double sum_ = 0;
  std::size_t count_ = 0;
};

/// By name, in the order of its bytes.
using SeriesMap = std::map<std::string, Series, std::less<>>;

/// One series for each column but the first, named by the header; columns of one name are one
/// series. Throws std::out_of_range where a row is longer than the header.
SeriesMap columnSeries(ResultRows& rows);

/// Two series for each device. Throws std::out_of_range where the header has fewer than four
/// fields or a row two to four.
SeriesMap deviceSeries(ResultRows& rows);
