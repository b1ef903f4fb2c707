#pragma once

#include <span>
#include <string_view>

/// What a monitor of the library says of its source on this machine.
struct SourceAnswer {
  bool there = false;
  int count = 0;  ///< cores, processes, disks or interfaces where the source has them
};

/// The profiler's sources: the word is the option of the profiler, and of the recording.
struct ProfilerSource {
  std::string_view word;
  std::string_view what;               ///< what it measures
  std::string_view counted;            ///< what `count` counts; empty: nothing
  SourceAnswer (*ask)(bool thorough);  ///< asks the library; a question that is not thorough
                                       ///< leaves out what takes long
};

extern const std::span<const ProfilerSource> profilerSources;
