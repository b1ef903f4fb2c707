#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace procmem {

/// Memory of one process at one moment, in KB (2^10 bytes).
struct procMemStats {
  int pid;
  int parentPid;
  std::string name;   ///< at most 39 bytes from our library; never empty
  std::uint64_t vss;  ///< virtual size
  std::uint64_t pss;  ///< proportional size; 0 where it may not be read
  std::uint64_t rss;  ///< resident size
  std::uint64_t uss;  ///< private clean and dirty pages; 0 where they may not be read
};

// A standard library with another string layout can only be used with a monitor library of its own.
#ifdef _LIBCPP_VERSION
static_assert(sizeof(procMemStats) == 64 && offsetof(procMemStats, name) == 8 &&
              offsetof(procMemStats, vss) == 32 && offsetof(procMemStats, pss) == 40 &&
              offsetof(procMemStats, rss) == 48 && offsetof(procMemStats, uss) == 56);
#endif

/// Memory of the user processes, in PID order (a kernel thread has none of its own).
///
/// Kernel sources: `/proc/PID/smaps_rollup`, `statm`, `stat`, `cmdline`. Where the first may not be
/// read (another user's process), the process is listed with PSS and USS 0, said once on standard
/// error. Not thread-safe: one object belongs to one thread.
class __attribute__((visibility("default"))) PERPROCMEM_MON {
 public:
  PERPROCMEM_MON();
  ~PERPROCMEM_MON();
  PERPROCMEM_MON(const PERPROCMEM_MON&) = delete;
  PERPROCMEM_MON& operator=(const PERPROCMEM_MON&) = delete;

  /// One record for every process that is alive (of the list, each once). They do not wait, but
  /// the kernel walks the processes' pages for them: microseconds to milliseconds a process. Our
  /// library asks at every call for the list; of all processes for who has run since the last call,
  /// for the others every two seconds.
  /// Empty: stop, nobody of the list is alive.
  std::vector<procMemStats> corvane_getPerProcessMemStats(std::vector<int> pids);
  std::vector<procMemStats> corvane_getPerProcessMemStats();

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace procmem
