#pragma once

#include <cstdint>
#include <optional>

/// Processor time in ns that the process `pid` has used, all its threads together, without opening
/// a file. Nothing and errno where that cannot be read; EINVAL: no process has this PID.
using ProcessClock = std::optional<std::uint64_t> (*)(int pid);

/// The clock of this machine; nullptr where it would not speak of the processes that `/proc` shows
/// (a tree of files, the `/proc` of another PID namespace) or where the kernel refuses it.
ProcessClock processClock();

/// Puts another clock in its place for monitors that are made from now on; nullptr: the kernel's.
void replaceProcessClock(ProcessClock clock);
