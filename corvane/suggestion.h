#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// "; did you mean ...?" with the candidate that is closest to the word, or nothing where none is
/// close.
std::string suggestion(const std::string& word, const std::vector<std::string>& candidates);

/// How many letters have to be changed, added, left out or swapped with the next one to get from
/// one word to the other.
std::size_t editDistance(const std::string& from, const std::string& to);
