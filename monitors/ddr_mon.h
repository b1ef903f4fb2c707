#pragma once

#include <cstdint>

namespace ddr {

/// Memory traffic of the last-level cache controller (LLCC) and of the memory controller's
/// interface (CABO).
///
/// Kernel source: the counting units described under `/sys/bus/event_source/devices`, read with
/// `perf_event_open`. A figure without a counter is 0, said once on standard error.
///
/// Not thread-safe: one object belongs to one thread.
class __attribute__((visibility("default"))) DDR_MON {
 public:
  DDR_MON();
  ~DDR_MON();
  DDR_MON(const DDR_MON&) = delete;
  DDR_MON& operator=(const DDR_MON&) = delete;

  /// The period in milliseconds at which the caller is going to sample. Takes the first reading,
  /// so that the first sample covers its own period only.
  void corvane_setSamplingTime(int milliseconds);

  /// Six bandwidths in MB/s (2^20 bytes) since the previous call: LLCC read, write, total, CABO
  /// read, write, total. Does not block. Valid until the next call.
  std::int64_t* corvane_getDDRStats();

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace ddr
