#include "steady_time.h"

#include <algorithm>
#include <cerrno>
#include <time.h>

namespace {

SteadyTime* replacement = nullptr;

}  // namespace

SteadyTime steadyNow() {
  return replacement == nullptr ? std::chrono::steady_clock::now() : *replacement;
}

void sleepUntil(SteadyTime deadline) {
  if (replacement != nullptr) {
    *replacement = std::max(*replacement, deadline);
    return;
  }
  const auto sinceStart = deadline.time_since_epoch();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceStart);
  const timespec until{.tv_sec = time_t(seconds.count()),
                       .tv_nsec = long(std::chrono::nanoseconds(sinceStart - seconds).count())};
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
  }
}

std::chrono::nanoseconds timeSinceBoot() {
  if (replacement != nullptr) return replacement->time_since_epoch();
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

void replaceSteadyTime(SteadyTime* time) {
  replacement = time;
}
