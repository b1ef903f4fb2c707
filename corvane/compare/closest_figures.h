#pragma once

#include <string>
#include <vector>

/// "; did you mean a, b or c?" with up to three of the names that are most like the one said, whose
/// parts are divided by points and colons; nothing where there are no names.
std::string closestFigures(const std::string& said, const std::vector<std::string>& names);
