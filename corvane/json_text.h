#pragma once

#include <string>
#include <string_view>

/// The text as a JSON string, quotes included; bytes that are no UTF-8 become U+FFFD.
std::string jsonString(std::string_view text);

/// Whether the text is a number as JSON has it: "-0.50" is one, "nan", "+1" and ".5" are none.
bool isJsonNumber(std::string_view text);

/// The number as short as it can be without loss; "0" where it is not finite.
std::string jsonNumber(double number);
