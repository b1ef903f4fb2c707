#pragma once

#include <optional>
#include <string>
#include <vector>

#include "gpu_fdinfo.h"
#include "kernel_file.h"
#include "steady_time.h"

/// The clients of the graphics devices, found by the descriptors of all processes.
class GpuClients {
 public:
  /// Reads what every client has used until now, each client once.
  void read();

  /// Load since the reading before the last; the last value where no time has passed.
  double load() const { return load_; }
  /// Clock of a device whose driver states it here.
  std::optional<double> megahertz() const;
  /// Whether a client was found whose driver counts engine time.
  bool countEngineTime() const;

 private:
  void findDescriptors();
  void findDescriptorsOf(const std::string& process);

  std::vector<std::string> descriptors_;  ///< paths of their fdinfo
  SteadyTime lastSearch_, lastReading_;
  std::vector<DrmClient> before_, now_;
  double load_ = 0;
  ReadBuffer text_;
};
