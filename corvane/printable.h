#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// A text that strangers may have written, fit for a terminal: control characters, also those
/// beyond ASCII and those that turn the writing direction, and bytes that are no UTF-8 are '?'.
std::string printable(std::string_view text);

/// The same in exactly so many characters: filled with blanks behind, or cut, which a '~' shows.
std::string printable(std::string_view text, std::size_t width);
