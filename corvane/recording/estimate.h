#pragma once

#include "ask_machine.h"
#include "plan.h"

/// Bytes of result files an hour for these sources at the plan's periods: an upper bound, since
/// kernel threads, which have no memory of their own, count as processes.
double bytesPerHour(const Plan& plan, const std::vector<SourceState>& sources);

/// Says, in a line on standard error, where the run would fill the disk: one without a limit in
/// less than a day, another one before its limit.
void warnOfFullDisk(const Plan& plan, const std::vector<SourceState>& sources);
