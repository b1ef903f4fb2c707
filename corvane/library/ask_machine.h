#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// What this machine has of a source.
struct SourceState {
  std::string word, what;
  std::string counted;  ///< what `count` counts; empty: nothing
  bool there = false;
  bool answered = true;  ///< the library said so, instead of crashing or hanging over the question
  int count = 0;
  std::string said;  ///< by the library, on what it cannot measure; why the source is not there
};

struct MachineSources {
  std::vector<SourceState> sources;
  std::string fileOfLibrary;     ///< its path
  std::string versionOfLibrary;  ///< the line in which it names itself
  std::string failure;           ///< why nothing can be said: there is no library that fits
};

/// Asks the monitor library that the profiler of that folder uses, in a process beside this one: a
/// library that crashes or hangs over a source takes that process down, and the sources left are
/// asked in another. The recording's own gauges follow. Takes some ten milliseconds, `thorough`
/// longer where there are many processes; some seconds for each source over which the library
/// hangs.
MachineSources askMachine(const std::filesystem::path& profilerFolder,
                          const std::vector<std::string>& words, bool thorough);

/// "v2.3.3", as the profiler says itself; empty where it does not.
std::string programVersion(const std::filesystem::path& profiler);
