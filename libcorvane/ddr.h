#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// Where memory traffic is counted.
enum class MemoryLevel : std::size_t { lastLevelCache, controller };
enum class Direction : std::size_t { read, write, both };

/// By the terms that the names of counting units are made of ("uncore_imc_0", "l3c").
std::optional<MemoryLevel> levelOf(std::string_view unit);
/// By the words that the names of events are made of ("cas_count_read", "flux-wr",
/// "total_rw_bytes").
std::optional<Direction> directionOf(std::string_view event);

/// Bytes in a period, by level and direction.
using MemoryTraffic = std::array<std::array<double, 3>, 2>;

/// MB/s, what was counted both ways at once in the total alone: last-level cache read, write,
/// total, memory controller read, write, total.
using MemoryBandwidths = std::array<std::int64_t, 6>;
MemoryBandwidths memoryBandwidths(const MemoryTraffic& bytes, std::chrono::nanoseconds passed);
