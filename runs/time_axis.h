#pragma once

#include <optional>
#include <vector>

#include "metadata.h"
#include "run_files.h"

namespace runs {

/// The times of a file's first two samples in its own microseconds.
struct FirstTimes {
  double first = 0;
  std::optional<double> second;
  bool counter = false;   // stamps of the counter since boot, not the time since the source's start
  bool rounded = false;   // to six digits: too coarse to tell the run's start
  bool ofPeriod = false;  // its first sample is of the period before it, not only of its moment

  double period() const { return second ? *second - first : 0; }
};

/// Nothing where the file has no sample.
std::optional<FirstTimes> firstTimes(const ResultFile& file);

/// What turns the files' microseconds into seconds of the run.
struct TimeAxis {
  double zero = 0;
  double secondsPerMicrosecond = 1e-6;

  double secondsAt(double microseconds) const {
    return (microseconds - zero) * secondsPerMicrosecond;
  }
};

/// The run begins at 0 where every source counts from its own start. With the counter's stamps it
/// begins where the metadata say, and without them one period before the earliest sample.
TimeAxis timeAxis(const std::vector<FirstTimes>& times, const std::optional<Metadata>& metadata);

}  // namespace runs
