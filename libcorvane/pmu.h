#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kernel_file.h"

/// An event that a counting unit of the machine can count, as its description under
/// `/sys/bus/event_source/devices` says.
struct PmuEvent {
  std::string unit, name;
  std::uint32_t type = 0;        ///< of the unit
  std::uint64_t config[3] = {};  ///< what selects the event there
  double bytes = 0;              ///< that one count stands for
  std::vector<int> cpus;         ///< one for each instance of the unit (socket, cluster)
};

/// The events of a unit that stand for amounts of bytes, by their scale and unit.
std::vector<PmuEvent> byteEvents(const std::string& unit);

/// A counter since it was opened. One that shares its hardware runs only part of the time.
struct CounterReading {
  std::uint64_t value = 0;
  std::uint64_t enabled = 0;  ///< ns
  std::uint64_t running = 0;  ///< ns
};

/// What was counted between two readings, extended to the time in which the counter did not run.
double counted(const CounterReading& before, const CounterReading& now);

/// Opens a counter of the event on one processor; errno where that fails.
Descriptor openCounter(const PmuEvent& event, int cpu);

/// Nothing where the counter cannot be read.
std::optional<CounterReading> readCounter(const Descriptor& counter);

/// What openCounter does, for tests: no tree of files can count.
using CounterOpener = Descriptor (*)(const PmuEvent& event, int cpu);
void setCounterOpener(CounterOpener opener);
