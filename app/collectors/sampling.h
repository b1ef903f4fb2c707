#pragma once

#include <cstdint>

/// When a sample was taken.
struct SampleTime {
  float elapsed = 0;  ///< µs since the collector's start; 32 bits, so it rounds beyond 2^24 µs
  double column = 0;  ///< µs for the time column: elapsed, or with --qtimer the counter's
};

/// The collector's clock; its construction is the start. Setting the wall clock does not move it,
/// and it does not stand still while the machine sleeps.
class SampleClock {
 public:
  SampleClock();
  SampleTime now() const;

 private:
  std::int64_t start_;  ///< µs
};

/// Whether the run's total time has not been reached with the sample taken at `time`.
bool timeLeft(const SampleTime& time);

/// Waits the slot's period; false when sampling has to stop.
bool waitForNextSample(int slot);
