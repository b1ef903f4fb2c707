#pragma once

#include <cstdint>

namespace memory {

/// System memory and swap.
///
/// Kernel source: `/proc/meminfo`. Not thread-safe: one object belongs to one thread.
class __attribute__((visibility("default"))) MEMORY_MON {
 public:
  MEMORY_MON();
  ~MEMORY_MON();
  MEMORY_MON(const MEMORY_MON&) = delete;
  MEMORY_MON& operator=(const MEMORY_MON&) = delete;

  /// Six amounts in KB (2^10 bytes): memory total, available (free, buffers and cached together
  /// where the kernel does not state it), used (total - available), swap total, free, used. Does
  /// not block. Where the file cannot be read, said once on standard error, all are 0. Valid until
  /// the next call.
  std::uint64_t* corvane_getMemStats();

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace memory
