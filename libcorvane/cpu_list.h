#pragma once

#include <string_view>
#include <vector>

/// The kernel's range lists ("0-3,8"): the numbers in their order; what is malformed ends the list.
std::vector<int> parseCpuList(std::string_view text);
