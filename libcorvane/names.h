#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Processes, devices and interfaces are named by strangers. What this library hands out must not be
// able to break a line of a text file, a CSV or a JSON text, to steer a terminal, or to be worked
// out by a spreadsheet.

inline constexpr std::size_t longestProcessName = 39;  ///< one less than its column is wide
inline constexpr std::size_t longestDeviceName = 19;   ///< one less than its column is wide

/// Every control character, quote, backslash, comma and byte of invalid UTF-8 becomes "_"; so do
/// the blanks of Unicode (not the plain one), what turns the direction of writing and what cannot
/// be seen, and a leading "=", "+", "@", or "-" before anything but a plain word. An empty name is
/// "_". A name of more than `longest` bytes keeps its first half and its last half around
/// "..", never cut within a character.
std::string safeName(std::string_view name, std::size_t longest);
