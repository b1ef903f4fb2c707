#pragma once

#include <string>

#include "run_summary.h"

/// A run's statistics as one JSON object: run, metrics, processes, names. Ends with a line end.
std::string showJson(const runs::RunSummary& run);
