#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Resident memory of one process in KB.
struct ResidentMemory {
  std::uint64_t resident = 0;
  std::uint64_t proportional = 0;  ///< pages that others share count by their share
  std::uint64_t unique = 0;        ///< private pages, clean and dirty
};

/// The sums of `/proc/PID/smaps_rollup`; nothing where one of them is missing.
std::optional<ResidentMemory> parseRollup(std::string_view text);

/// The first two values of `/proc/PID/statm`, in KB.
struct MemorySize {
  std::uint64_t virtualSize = 0;
  std::uint64_t resident = 0;
};

std::optional<MemorySize> parseStatm(std::string_view text, std::uint64_t pageSize);
