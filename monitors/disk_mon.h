#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace diskio {

/// One block device in one period.
struct diskStats {
  char name[32];                 ///< NUL-terminated, at most 19 bytes from our library
  std::uint64_t sectorsRead;     ///< sectors of 512 bytes read in the period
  std::uint64_t sectorsWritten;  ///< sectors of 512 bytes written in the period
};

static_assert(sizeof(diskStats) == 48 && offsetof(diskStats, sectorsRead) == 32 &&
              offsetof(diskStats, sectorsWritten) == 40);

/// Traffic of the whole block devices that have a size (no partitions, no unbound loop devices).
///
/// Kernel sources: `/proc/diskstats`, `/sys/block`. Not thread-safe: one object belongs to one
/// thread.
class __attribute__((visibility("default"))) DISK_MON {
 public:
  /// `wait(8)` is called once per sample to let one period pass; it returns 110 (ETIMEDOUT) when
  /// sampling goes on and anything else when it has to stop.
  explicit DISK_MON(int (*wait)(int));
  ~DISK_MON();
  DISK_MON(const DISK_MON&) = delete;
  DISK_MON& operator=(const DISK_MON&) = delete;

  /// The period in milliseconds that `wait` lets pass. Takes the first reading, so that the first
  /// sample covers its own period only.
  void corvane_setSamplingTime(int milliseconds);

  /// Blocks for one period through `wait`, then returns the devices' records. Empty: stop, because
  /// `wait` said so or the machine has no block device (said once on standard error). Valid until
  /// the next call of this method.
  std::vector<diskStats>* corvane_getIOStats();

  /// Number of records of the last sample; 0 means stop. Does not block.
  int corvane_getNumOfIOStats();

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace diskio
