#include "gauge.h"

#include <algorithm>

#include "names.h"

void Gauge::addColumn(std::string_view name, std::string_view unit, std::string_view number) {
  auto safe = safeName(name, longestDeviceName);
  std::ranges::replace(safe, ' ', '_');  // which separates fields
  const auto column = [&] { return safe + "(" + std::string(unit) + ")"; };
  if (std::ranges::find(columns_, column()) != columns_.end()) safe.append(".").append(number);
  columns_.push_back(column());
}

const std::vector<GaugeKind>& gaugeKinds = *new std::vector<GaugeKind>{
    {"thermal", "temperatures", temperatureGauge, "no zone of /sys/class/thermal can be read"},
    {"freq", "core clocks and their limits", frequencyGauge,
     "no core has a cpufreq folder in /sys/devices/system/cpu"},
    {"power", "power of batteries, processors and sensors", powerGauge,
     "neither /sys/class/power_supply, /sys/class/powercap nor /sys/class/hwmon tells any power"},
    {"pressure", "time in which tasks waited for processor, memory and disks", pressureGauge,
     "the kernel has no /proc/pressure"},
};
