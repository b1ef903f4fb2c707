#pragma once

#include <chrono>
#include <string>

/// Tells on standard error how far a reading has got, where that is a terminal and it takes longer
/// than two seconds. The line is gone afterwards.
class ProgressLine {
 public:
  explicit ProgressLine(const std::string& what);
  ~ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  /// 0 to 1. Cheap: it may be called for every sample.
  void show(double part);

 private:
  using Clock = std::chrono::steady_clock;

  std::string what_;
  bool isTerminal_;
  bool shown_ = false;
  Clock::time_point next_;
};
