#pragma once

#include <string>
#include <vector>

/// "; did you mean ...?" with the candidate that is closest to the word, or nothing where none is
/// close.
std::string suggestion(const std::string& word, const std::vector<std::string>& candidates);
