#pragma once

#include <chrono>

#include "steady_time.h"

/// The period of a monitor that blocks by itself. Deadlines are absolute, so that the work between
/// two waits does not make the sampling drift; deadlines that were missed are skipped.
class Period {
 public:
  /// 0 and below: wait() returns at once.
  void start(int milliseconds);
  /// The first period begins with the first wait: a caller that counts the time of its samples from
  /// there finds none of them early.
  void wait();

 private:
  std::chrono::nanoseconds length_{0};
  SteadyTime deadline_;  ///< unset before the first wait
};
