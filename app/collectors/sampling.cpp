#include "sampling.h"

#include <cerrno>
#include <time.h>

#include "profiler_threads.h"
#include "run_parameters.h"
#include "virtual_counter.h"

namespace {

std::int64_t microsecondsSinceBoot() {
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return std::int64_t{now.tv_sec} * 1'000'000 + now.tv_nsec / 1000;
}

}  // namespace

SampleClock::SampleClock() : start_(microsecondsSinceBoot()) {}

SampleTime SampleClock::now() const {
  SampleTime time{.elapsed = float(microsecondsSinceBoot() - start_)};
  time.column = qtimerEnabled ? virtualCounterMicroseconds() : double(time.elapsed);
  return time;
}

bool timeLeft(const SampleTime& time) {
  return time.elapsed / 1'000'000.0F < float(profilingTime) || infiniteProfiling;
}

bool waitForNextSample(int slot) {
  return cond_timedwait(slot) == ETIMEDOUT;
}
