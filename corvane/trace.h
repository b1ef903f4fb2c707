#pragma once

#include <string>

#include "run_choice.h"

struct TraceOptions {
  RunChoice choice;
  std::string output;  // compressed where it ends in ".gz"
  bool all = false;    // tracks that are zero throughout, too
  double maxMb = 0;    // 0: any size
};

/// Writes a run as a trace that viewers show in full. Returns the exit status.
int trace(const TraceOptions& options);
