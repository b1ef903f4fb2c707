#pragma once

#include <filesystem>

#include "signals.h"

/// Says on standard error, in three lines, what has been recorded: where, how much, and which
/// processes used most processor time. A signal breaks off the reading of a long run.
void sayClosingLines(const std::filesystem::path& runFolder, const Signals& signals);
