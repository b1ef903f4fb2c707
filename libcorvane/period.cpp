#include "period.h"

#include <cerrno>
#include <time.h>

void Period::start(int milliseconds) {
  length_ = std::chrono::milliseconds(milliseconds > 0 ? milliseconds : 0);
  deadline_ = {};
}

void Period::wait() {
  if (length_.count() == 0) return;
  if (deadline_ == SteadyTime{}) deadline_ = std::chrono::steady_clock::now() + length_;
  const auto sinceStart = deadline_.time_since_epoch();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceStart);
  const timespec until{.tv_sec = time_t(seconds.count()),
                       .tv_nsec = long(std::chrono::nanoseconds(sinceStart - seconds).count())};
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
  }
  const auto late = std::chrono::steady_clock::now() - deadline_;
  deadline_ += length_ * (1 + late / length_);
}
