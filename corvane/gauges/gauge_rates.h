#pragma once

#include <cstdint>
#include <optional>

// What happened between two readings of a counter, `seconds` apart; NaN where that is not known:
// a reading is missing, no time has passed, or the counter stepped back.

/// W from two readings of a counter of µJ that starts again at 0 beyond `range` (0: not known). A
/// step back that would make an absurd power of that is taken for a reset.
double meanPower(std::optional<std::uint64_t> before, std::optional<std::uint64_t> now,
                 std::uint64_t range, double seconds);

/// Percent of the time that passed, from two readings of a counter of µs.
double shareOfTime(std::optional<std::uint64_t> before, std::optional<std::uint64_t> now,
                   double seconds);
