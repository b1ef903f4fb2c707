#pragma once

#include <cstdint>

/// What a counter gained between two readings. Nothing where it ran backwards: it was reset, or its
/// device has come back.
inline std::uint64_t advance(std::uint64_t before, std::uint64_t now) {
  return now > before ? now - before : 0;
}
