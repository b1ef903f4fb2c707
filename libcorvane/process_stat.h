#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What `/proc/PID/stat` says of one process. Times are in clock ticks.
struct ProcessStat {
  std::string_view comm;  ///< the kernel's name, any bytes; within the text that was parsed
  int parentPid = 0;
  std::uint64_t userTicks = 0;
  std::uint64_t systemTicks = 0;
  std::uint64_t startTicks = 0;    ///< since boot; with the PID it tells who this is
  std::uint64_t virtualBytes = 0;  ///< 0: no memory of its own (a kernel thread, a zombie)
};

/// Nothing where the text is cut short of these fields.
std::optional<ProcessStat> parseProcessStat(std::string_view text);

/// The name by which a user knows the process, made safe: argv[0] as the process shows it, of an
/// absolute path the last component of its first word; `comm` where argv[0] is empty, a kernel
/// worker's without what it does at the moment.
std::string processName(std::string_view cmdline, std::string_view comm);
