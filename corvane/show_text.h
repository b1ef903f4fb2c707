#pragma once

#include <string>

#include "run_summary.h"

/// A run's statistics for a terminal of 80 columns. Headings stand out where `colour` is set.
std::string showText(const runs::RunSummary& run, bool colour);
