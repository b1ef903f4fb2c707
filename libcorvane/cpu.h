#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// Ticks that one core, or all together, have spent since boot.
struct CpuTicks {
  bool online = false;     ///< an offline core has no line
  std::uint64_t busy = 0;  ///< user, nice, system, irq, softirq; guest times are within user, nice
  std::uint64_t idle = 0;  ///< may run backwards on its own
  std::uint64_t iowait = 0;  ///< may run backwards on its own
  std::uint64_t steal = 0;   ///< 0 where the kernel does not count it
};

/// Reads the "cpu" lines of `/proc/stat` into `ticks`: element 0 all cores, element N + 1 "cpuN".
/// Lines beyond the end of `ticks` are left out.
void parseCpuTicks(std::string_view stat, std::vector<CpuTicks>& ticks);

struct CpuShare {
  double usage = 0;  ///< percent of the ticks that passed
  double steal = 0;  ///< percent of the ticks that passed
};

/// What every element of `before` and `now` did between the two readings; where no tick has passed
/// for it, its share stands. An offline core, and one that has just come back, did nothing. All
/// cores together are the sum of those that were online in both readings, since the kernel's own
/// sum jumps when a core leaves and runs backwards when it returns; it stands in where the kernel
/// tells no cores.
void updateShares(const std::vector<CpuTicks>& before, const std::vector<CpuTicks>& now,
                  std::vector<CpuShare>& shares);

/// Number of cores that can ever be online.
std::size_t possibleCpus();
