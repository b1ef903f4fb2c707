#pragma once

#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "run_summary.h"

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

/// What is meant of the run in `folder`, with what could not be read told and progress shown.
/// Nothing, after a message, where there is none.
std::optional<runs::RunSummary> readChosen(const std::filesystem::path& folder,
                                           const RunChoice& choice, const runs::Detail& detail);

/// Whether the path is one of a run's result files, said in a message: no page or trace takes the
/// place of samples.
bool isResultFile(const std::string& path, const std::filesystem::path& folder);

/// Says why nothing of a run is meant; `end` is where it ends, negative where it holds nothing.
void tellEmpty(const std::filesystem::path& folder, double end);

/// What a run is called: the last part of its folder's path.
std::string labelOf(const std::filesystem::path& folder);
