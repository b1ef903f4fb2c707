#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace net {

/// One network interface in one period.
struct netStats {
  std::string name;
  std::uint64_t collisions;  ///< counter 1
  std::uint64_t txBytes;     ///< counter 2
  std::uint64_t rxBytes;     ///< counter 3
  std::uint64_t txPackets;   ///< counter 4
  std::uint64_t rxPackets;   ///< counter 5
  std::uint64_t txDropped;   ///< counter 6
  std::uint64_t rxDropped;   ///< counter 7
};

// A standard library with another string layout can only be used with a monitor library of its own.
#ifdef _LIBCPP_VERSION
static_assert(sizeof(netStats) == 80 && offsetof(netStats, collisions) == 24 &&
              offsetof(netStats, txBytes) == 32 && offsetof(netStats, rxBytes) == 40 &&
              offsetof(netStats, txPackets) == 48 && offsetof(netStats, rxPackets) == 56 &&
              offsetof(netStats, txDropped) == 64 && offsetof(netStats, rxDropped) == 72);
#endif

/// Traffic of the network interfaces.
///
/// Kernel source: `/proc/net/dev`. An interface that appears gives its first record one period
/// later. Not thread-safe: one object belongs to one thread.
class __attribute__((visibility("default"))) NET_MON {
 public:
  NET_MON();
  ~NET_MON();
  NET_MON(const NET_MON&) = delete;
  NET_MON& operator=(const NET_MON&) = delete;

  /// The period in milliseconds of the following samples (0 and below: do not wait at all). Takes
  /// the first reading, so that the first sample covers its own period only.
  void corvane_setSamplingTime(int milliseconds);

  /// Blocks until one period has passed since the last sample (a deadline that was missed is
  /// skipped) and returns what each interface has counted in it, in the kernel's order. Empty
  /// where there is no interface or the file cannot be read, the latter said once on standard
  /// error.
  std::vector<netStats> corvane_getNetstats();

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace net
