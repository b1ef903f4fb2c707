#pragma once

#include <string>
#include <vector>

/// The fields of a line: what stands between blanks, never empty. Only the blank separates; a tab
/// or a carriage return stays inside its field.
std::vector<std::string> splitline(std::string line);
