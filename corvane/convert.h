#pragma once

#include <string>

struct ConvertOptions {
  std::string run;  // a run folder; empty: the newest below ./Results_corvane
  bool json = false, csv = false, summary = false;
};

/// Makes what the profiler makes of a run when it ends, byte for byte, without its console text.
/// Returns the exit status.
int convert(const ConvertOptions& options);
