#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace runs {

/// A result file of a run folder: `prefix` is its name up to "profiler_", as in "cpu", "procmem-".
struct ResultFile {
  std::string prefix;
  std::filesystem::path path;
};

/// The result files of a run folder, sorted by name; empty where there is none or the folder cannot
/// be read.
std::vector<ResultFile> listResultFiles(const std::filesystem::path& folder);

/// The folder's path in plain form: its last part is the run's name, whatever it was called ("x/",
/// "." or "..").
std::filesystem::path plainFolder(const std::filesystem::path& folder);

/// The run folder that changed last below `results`; empty where there is none.
std::filesystem::path newestRun(const std::filesystem::path& results);

}  // namespace runs
