#pragma once

#include <cstddef>
#include <vector>

namespace process {

/// One process in one period.
struct procStats {
  int pid;
  char name[68];      ///< NUL-terminated, at most 39 bytes from our library; never empty
  double userTime;    ///< s since the process started
  double systemTime;  ///< s since the process started
  double totalTime;   ///< s, user and system together
  double usage;       ///< share of the period, 1.0 = one core; never above the online cores.
                      ///< A process that started in the period: all it has used, over the period
};

static_assert(sizeof(procStats) == 104 && offsetof(procStats, name) == 4 &&
              offsetof(procStats, userTime) == 72 && offsetof(procStats, systemTime) == 80 &&
              offsetof(procStats, totalTime) == 88 && offsetof(procStats, usage) == 96);

/// Processor time of the processes, in PID order.
///
/// Kernel sources: `/proc/PID/stat`, `/proc/PID/cmdline` and the processes' processor-time clocks.
/// Names hold no byte that could break a line of text. Not thread-safe: one object belongs to one
/// thread.
class __attribute__((visibility("default"))) PROCESS_MON {
 public:
  /// `wait(7)` is called once per sample to let one period pass; it returns 110 (ETIMEDOUT) when
  /// sampling goes on and anything else when it has to stop. `pids`: the processes to watch.
  PROCESS_MON(int (*wait)(int), std::vector<int> pids);
  explicit PROCESS_MON(int (*wait)(int));
  ~PROCESS_MON();
  PROCESS_MON(const PROCESS_MON&) = delete;
  PROCESS_MON& operator=(const PROCESS_MON&) = delete;

  /// The period in milliseconds that `wait` lets pass. Takes the first reading, so that the first
  /// sample covers its own period only.
  void corvane_setSamplingTime(int milliseconds);

  /// Block for one period through `wait`, then return one record for every process that is alive
  /// (of the list, each once). Empty: stop, because `wait` said so or nobody of the list is alive.
  std::vector<procStats> corvane_getProcessStats(std::vector<int> pids);
  std::vector<procStats> corvane_getProcessStats();

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace process
