#pragma once

#include <filesystem>
#include <string>

/// Makes the monitor library's classes usable in this process: the library that a profiler lying in
/// `profilerFolder` would be given by the loader (one of LD_LIBRARY_PATH, else the one beside it).
/// A static build has it linked in. Returns where it is; ends the process with status 1 after a
/// line on standard error where there is none.
std::string useMonitorLibrary(const std::filesystem::path& profilerFolder);
