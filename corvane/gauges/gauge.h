#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A source that the recording samples itself, beside the profiler's: one row of numbers a sample.
/// The columns are those of the machine as it was found at the start; a value that cannot be read
/// now (a zone has gone, a core is offline, a counter stepped back) is NaN, never a stand-in.
/// Not thread-safe.
class Gauge {
 public:
  Gauge() = default;
  Gauge(const Gauge&) = delete;
  Gauge& operator=(const Gauge&) = delete;
  virtual ~Gauge() = default;

  /// Name and, in brackets, unit of each value: "cpu0(MHz)". Empty: the machine has nothing of it.
  const std::vector<std::string>& columns() const { return columns_; }
  /// One value for each column. Reads kernel files that are held open; does not block.
  virtual void sample(std::vector<double>& values) = 0;

 protected:
  /// Adds a column named by a stranger; where the name is taken, `number` tells the two apart.
  void addColumn(std::string_view name, std::string_view unit, std::string_view number);

  std::vector<std::string> columns_;
};

std::unique_ptr<Gauge> temperatureGauge();  ///< the kernel's thermal zones
std::unique_ptr<Gauge> frequencyGauge();    ///< the cores' clocks and the limits set to them
std::unique_ptr<Gauge> powerGauge();        ///< batteries, energy counters, power sensors
std::unique_ptr<Gauge> pressureGauge();     ///< time in which tasks waited for a resource

struct GaugeKind {
  std::string_view word;  ///< on the command line and in the file's name
  std::string_view what;  ///< what it measures
  std::unique_ptr<Gauge> (*make)();
  std::string_view missing;  ///< said where the machine has nothing of it
};

extern const std::vector<GaugeKind>& gaugeKinds;
