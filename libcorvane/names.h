#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Processes, devices and interfaces are named by strangers. What this library hands out must not be
// able to break a line of a text file, a CSV or a JSON text.

inline constexpr std::size_t longestProcessName = 39;  ///< one less than its column is wide
inline constexpr std::size_t longestDeviceName = 19;   ///< one less than its column is wide

/// Every control character, quote, backslash, comma and byte of invalid UTF-8 becomes "_", an empty
/// name "_". A name of more than `longest` bytes keeps its first half and its last half around
/// "..", never cut within a character.
std::string safeName(std::string_view name, std::size_t longest);
