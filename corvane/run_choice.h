#pragma once

#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "run_reader.h"

/// What every subcommand that reads runs takes.
struct RunChoice {
  std::string run;  // a run folder; empty: the newest below ./Results_corvane
  double from = 0;  // seconds of the run
  double to = std::numeric_limits<double>::infinity();
  std::vector<std::string> processes;  // names (shell patterns) or PIDs; empty: all
};

runs::Selection selectionOf(const RunChoice& choice);

/// The run folder meant, or an empty path after a message.
std::filesystem::path chosenRun(const std::string& run);
