#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "record.h"

/// A recording as it was asked for, every word of it checked.
struct Plan {
  std::vector<std::string> command;  ///< empty: until a signal or the limit
  std::string executable;            ///< of the command, found in PATH
  std::optional<std::chrono::milliseconds> limit;
  std::vector<std::string> sources;  ///< in the order of allSources()
  bool sourcesNamed = false;         ///< by --only: those and no others, here or not
  std::chrono::milliseconds every{1000};
  std::map<std::string, std::chrono::milliseconds> own;  ///< periods of single sources
  std::optional<std::string> name;
  std::map<std::string, std::string> labels;
  std::filesystem::path output, profiler;

  std::chrono::milliseconds periodOf(const std::string& source) const;
  std::chrono::milliseconds longestPeriod() const;
};

/// The words of all sources, the profiler's first.
std::vector<std::string> allSources();

/// 90s, 10m, 2h, 500ms, 1.5s. Throws a Refusal that names the `option`.
std::chrono::milliseconds parseDuration(const std::string& option, const std::string& text);

/// The profiler that lies beside this program, or the one named. Throws a Refusal without one.
std::filesystem::path findProfiler(const std::string& named);

/// Throws a Refusal for the first word that makes no sense.
Plan makePlan(const RecordOptions& options);
