#pragma once

#include <string>
#include <vector>

/// What the monitor library could not measure: the lines of the console that begin with
/// "corvane: ", without that, each once.
std::vector<std::string> noticesIn(const std::string& console);

/// The last lines that are not empty, at most `most`.
std::vector<std::string> lastLines(const std::string& console, std::size_t most);
