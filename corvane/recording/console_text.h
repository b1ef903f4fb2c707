#pragma once

#include <optional>
#include <string>
#include <vector>

/// What the monitor library could not measure: the lines of the console that begin with
/// "corvane: ", without that, each once.
std::vector<std::string> noticesIn(const std::string& console);

/// A file that the profiler could not write as a whole.
struct UnwrittenFile {
  std::string file, reason;
};

/// What the notice says of such a file, if it does.
std::optional<UnwrittenFile> unwrittenFile(const std::string& notice);

/// The last lines that are not empty, at most `most`.
std::vector<std::string> lastLines(const std::string& console, std::size_t most);
