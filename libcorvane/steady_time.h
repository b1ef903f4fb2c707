#pragma once

#include <chrono>

/// Monotonic time, at which readings are taken and over which rates are computed.
using SteadyTime = std::chrono::steady_clock::time_point;

SteadyTime steadyNow();

/// Blocks until `deadline`, whatever signals arrive.
void sleepUntil(SteadyTime deadline);

/// With the time that the machine was suspended, as the kernel dates the start of a process.
std::chrono::nanoseconds timeSinceBoot();

/// Puts a time in the clocks' place that passes only as `time` is set and as somebody sleeps;
/// nullptr: the kernel's. Only tests do, so that hours pass at once.
void replaceSteadyTime(SteadyTime* time);
