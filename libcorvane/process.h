#pragma once

#include <string>

#include "kernel_file.h"
#include "process_watch.h"

/// Cores' worth of processor time between two readings, over the time that passed between them: 0
/// to `cores`.
double usageBetween(const CpuReading& before, const CpuReading& now, double cores);

/// Number of cores that are online now.
class OnlineCores {
 public:
  double count();

 private:
  KernelFile file_{"/sys/devices/system/cpu/online"};
  std::string text_;  ///< what count_ was worked out from
  double count_ = 0;
};
