#pragma once

#include "run_choice.h"

struct ShowOptions {
  RunChoice choice;
  bool json = false;
};

/// Puts a run's statistics on standard output. Returns the exit status.
int show(const ShowOptions& options);
