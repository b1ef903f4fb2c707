#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

/// Amounts in KB; what a kernel does not state is missing.
struct MemoryAmounts {
  std::optional<std::uint64_t> total, free, available, buffers, cached, swapTotal, swapFree;
};

/// Reads the text of `/proc/meminfo`.
MemoryAmounts parseMeminfo(std::string_view text);

/// Total, available, used, swap total, free, used, in KB.
using MemoryFigures = std::array<std::uint64_t, 6>;

/// Kernels before 3.14 do not state what is available: free, buffers and cached together stand in
/// for it, a little high, since not all of the cache can be given up.
MemoryFigures memoryFigures(const MemoryAmounts& amounts);
