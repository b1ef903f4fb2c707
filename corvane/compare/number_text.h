#pragma once

#include <string>

/// Four significant digits, never an exponent for what a profiler measures.
std::string numberText(double value);

/// "+4.1%" of the base value; "from 0" where that is 0 and the other is not.
std::string changeText(double base, double fresh);
