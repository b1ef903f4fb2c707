#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "process_clock.h"
#include "process_folder.h"
#include "process_stat.h"
#include "steady_time.h"

/// Processor time that a process had used at a moment.
struct CpuReading {
  std::uint64_t used = 0;  ///< ns since the process started
  SteadyTime at;
};

/// What is known of a process from one look to the next.
struct Process {
  int pid = 0;
  int parentPid = 0;
  std::string name;  ///< safe; empty: nothing could be read so far
  CpuReading cpu;    ///< of the last look
  std::uint64_t startTicks = 0;
  std::uint64_t userTicks = 0;
  std::uint64_t systemTicks = 0;
  std::uint64_t virtualBytes = 0;
  std::uint64_t usedAtStat = 0;  ///< cpu.used when `stat` was read
  SteadyTime statAt;             ///< when that was
  SteadyTime nameDue;            ///< when the name is to be read again, if it may differ
  std::uint32_t commHash = 0;
  bool nameMayDiffer = false;  ///< it has run since, or had no arguments then
  bool hasEnded = false;       ///< its memory is gone and its arguments with it: a zombie
};

enum class Sight {
  gone,        ///< no process has this PID any more; nothing is known of it
  unreadable,  ///< alive, but it could not be read: what was known stands
  unchanged,   ///< known without reading `stat`
  read,        ///< `stat` was read again
  started      ///< the first look at this process; an earlier one may have had its PID
};

/// Looks at processes with as few file reads as the truth allows: whose processor-time clock
/// stands still has not run, and who has not run has neither new times nor a new name.
class ProcessWatch {
 public:
  /// `stale`: how many ns a process may run before its `stat` is read again (1: read at any move).
  explicit ProcessWatch(std::uint64_t stale) : stale_(stale) {}

  ProcessFolder& folder() { return folder_; }

  Sight look(Process& process);
  /// Reads `stat` in any case, without a new reading of the clock.
  Sight readStat(Process& process) { return readStat(process, Source::clock); }

  /// The shortest time that readings can tell apart.
  std::chrono::nanoseconds resolution() const;

 private:
  enum class Source { clock, ticks };  ///< of a process's processor time

  Sight readStat(Process& process, Source source);
  bool isStale(const Process& process, const CpuReading& now) const;
  void readName(Process& process, const ProcessStat& stat);

  ProcessFolder folder_;
  ProcessClock clock_ = processClock();
  std::uint64_t stale_;
};

/// Makes `watched`, which holds a `process` each by PID, speak of `pids` (ascending), with what was
/// known of those that stay.
template <class Watched>
void follow(std::vector<Watched>& watched, const std::vector<int>& pids) {
  auto pid = pids.begin();
  std::erase_if(watched, [&](const Watched& entry) {
    while (pid != pids.end() && *pid < entry.process.pid)
      ++pid;
    return pid == pids.end() || *pid != entry.process.pid;
  });
  auto known = watched.size();
  // Some room for newcomers, but not the double that growing would take.
  if (pids.size() > watched.capacity()) watched.reserve(pids.size() + pids.size() / 8);
  watched.resize(pids.size());
  for (auto place = pids.size(); place > known; --place) {
    const bool stays = known > 0 && watched[known - 1].process.pid == pids[place - 1];
    watched[place - 1] = stays ? std::move(watched[--known]) : Watched{};
    watched[place - 1].process.pid = pids[place - 1];
  }
}

/// Length of the kernel's clock tick in ns.
std::uint64_t tickLength();
