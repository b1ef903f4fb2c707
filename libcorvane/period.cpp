#include "period.h"

void Period::start(int milliseconds) {
  length_ = std::chrono::milliseconds(milliseconds > 0 ? milliseconds : 0);
  deadline_ = {};
}

void Period::wait() {
  if (length_.count() == 0) return;
  if (deadline_ == SteadyTime{}) deadline_ = steadyNow() + length_;
  sleepUntil(deadline_);
  const auto late = steadyNow() - deadline_;
  deadline_ += length_ * (1 + late / length_);
}
