#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "envelope.h"
#include "statistics.h"

namespace runs {

/// A state over time: where it began, ended and was largest.
struct Course {
  std::uint64_t count = 0;  // 0: not measured
  double first = 0, last = 0, peak = 0;
  double firstTime = 0, lastTime = 0;  // seconds of the run

  void add(double time, double value) {
    if (count++ == 0) {
      first = peak = value;
      firstTime = time;
    }
    if (value > peak) peak = value;
    last = value;
    lastTime = time;
  }
  double growth() const { return last - first; }
  /// 0 where it was measured once only.
  double growthPerMinute() const {
    return lastTime > firstTime ? growth() / (lastTime - firstTime) * 60 : 0;
  }
};

/// One process in its lifetime: a PID that comes back is another one. Or all of a name together.
struct Process {
  int pid = 0;
  std::string name;             // the last one it had of those that are meant
  std::uint64_t processes = 1;  // how many it stands for
  double first = 0, last = 0;   // its first and its last sample, seconds of the run
  bool alive = false;           // still there in the last sample
  double cpuSeconds = 0;        // processor time used in the part of the run that is meant
  Range cpu;                    // % of a core; no samples: not measured
  Course pss;                   // KB
  Envelope cpuEnvelope{}, pssEnvelope{};  // where asked for
};

/// Two readings of one process's processor time, in seconds, may run back by this much without it
/// being another process.
inline constexpr double clockNoise = 0.02;

/// How many ended processes are kept of those with most processor time, with the highest peak of
/// memory and with most growth of memory, each.
inline constexpr std::size_t keptEnded = 50;

std::vector<Process*> eachOf(std::vector<Process>& processes);

/// Leaves those of `ended` that belong to the first `keep` in one of these three respects.
void keepTop(std::vector<Process>& ended, std::size_t keep);

/// Where their envelopes hold more than there is room for, leaves detail only to those that belong
/// to the first few in one of these three respects.
void coarsenAllButTop(const std::vector<Process*>& all);

}  // namespace runs
