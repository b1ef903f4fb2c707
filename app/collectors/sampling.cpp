#include "sampling.h"

#include <cerrno>
#include <cstdint>

#include "profiler_threads.h"
#include "run_parameters.h"
#include "virtual_counter.h"

SampleClock::SampleClock() {
  gettimeofday(&start_, nullptr);
}

SampleTime SampleClock::now() const {
  timeval now{};
  gettimeofday(&now, nullptr);
  const auto elapsed = std::int64_t(now.tv_usec) - std::int64_t(start_.tv_usec) +
                       (std::int64_t(now.tv_sec) - std::int64_t(start_.tv_sec)) * 1'000'000;
  SampleTime time{.elapsed = float(elapsed)};
  time.column = qtimerEnabled ? virtualCounterMicroseconds() : double(time.elapsed);
  return time;
}

bool timeLeft(const SampleTime& time) {
  return time.elapsed / 1'000'000.0F < float(profilingTime) || infiniteProfiling;
}

bool waitForNextSample(int slot) {
  return cond_timedwait(slot) == ETIMEDOUT;
}
