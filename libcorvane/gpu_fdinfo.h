#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What one client has used of one kind of engine ("render", "video"), since it began.
struct EngineUse {
  std::string name;
  std::uint64_t busy = 0;         ///< ns
  std::uint64_t cycles = 0;       ///< of `totalCycles`, where the driver counts these and not ns
  std::uint64_t totalCycles = 0;  ///< that have passed on the engine, whoever used them
  std::uint64_t capacity = 1;     ///< engines of this kind
};

/// A client of a graphics device: what one opening of it stands for, however many descriptors, in
/// however many processes, have come of it.
struct DrmClient {
  static constexpr std::size_t mostEngines = 16;

  std::string device;
  std::uint64_t id = 0;
  double megahertz = 0;  ///< clock of the device where the driver states it here
  std::array<EngineUse, mostEngines> engines;
  std::size_t engineCount = 0;

  std::span<const EngineUse> used() const { return {engines.data(), engineCount}; }
};

/// Adds the client that the text of a `/proc/PID/fdinfo/FD` speaks of, unless it is there already.
/// A descriptor of something else adds none.
void addClient(std::vector<DrmClient>& clients, std::string_view fdinfo);

/// Load of the busiest kind of engine over the time between two readings, in percent: of what its
/// engines could have done, what all clients together have used. A client that is new counts from
/// the next reading on.
double engineLoad(std::span<const DrmClient> before, std::span<const DrmClient> now,
                  std::chrono::nanoseconds passed);
