#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

// The fields' numbers exactly as the C library reads and prints them, but without it where the
// field is plain: a sign, digits, a point, digits.

/// What std::stof makes of the field; nothing where that throws.
std::optional<float> toFloat(std::string_view field);

/// What strtod makes of the whole field; nothing where it is no number.
std::optional<double> toDouble(std::string_view field);

/// What atof makes of the field (0 where it is no number), narrowed.
float toSample(std::string_view field);

/// More bytes than "%.2f" ever gives.
inline constexpr std::size_t twoDecimalsRoom = 64;

/// Puts the value down as "%.2f" does, without an end mark; returns where it ends.
char* putTwoDecimals(char* to, float value);

/// Puts what std::stof makes of the field down with two decimals; null where that throws.
char* putNumber(char* to, std::string_view field);
