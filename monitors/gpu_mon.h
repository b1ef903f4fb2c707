#pragma once

#include <string>
#include <vector>

namespace gpu {

/// Clock, load and memory traffic of the graphics processor.
///
/// Kernel sources, the first that answers for each value: the DRM driver's attributes
/// (`/sys/class/drm/card*/device/gpu_busy_percent`, `mem_busy_percent`, the clock attributes), the
/// attributes that phones' drivers have below `/sys/class`, their platform device,
/// `/sys/kernel/gpu` and `/sys/kernel/ged/hal`, devfreq (`/sys/class/devfreq/*`), DRM fdinfo
/// (`/proc/PID/fdinfo/*`, engine times). A value without a source is 0, said once on standard
/// error.
///
/// Not thread-safe: one object belongs to one thread.
class __attribute__((visibility("default"))) GPU_MON {
 public:
  GPU_MON();
  ~GPU_MON();
  GPU_MON(const GPU_MON&) = delete;
  GPU_MON& operator=(const GPU_MON&) = delete;

  /// The names of the five values in the order frequency, utilization, bus busy, read bandwidth,
  /// write bandwidth; always five, also on a machine without a GPU.
  std::vector<std::string> corvane_getGPUHeaders();

  /// Takes one sample; the getters below speak of it. Does not block. 0, or -1 where the machine
  /// has no GPU that can be read.
  int corvane_getGPUSample();

  float corvane_getGPUFrequency();    ///< MHz
  float corvane_gpuBusBusy();         ///< percent, 0 to 100
  float corvane_getGPUUtilization();  ///< percent, 0 to 100, since the previous sample
  float corvane_getReadBandwidth();   ///< MB/s (2^20 bytes), since the previous sample
  float corvane_getWriteBandwidth();  ///< MB/s (2^20 bytes), since the previous sample

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace gpu
