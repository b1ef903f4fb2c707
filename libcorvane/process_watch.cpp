#include "process_watch.h"

#include <cerrno>
#include <functional>
#include <unistd.h>
#include <utility>

#include "notice.h"

namespace {

/// A process that goes on running is asked for its name once in this time.
constexpr std::chrono::seconds nameLasts{1};

bool nameIsOld(const Process& process) {
  return process.cpu.at - process.nameAt >= nameLasts;
}

}  // namespace

std::uint64_t tickLength() {
  static const auto length = std::uint64_t(1'000'000'000 / ::sysconf(_SC_CLK_TCK));
  return length;
}

std::chrono::nanoseconds ProcessWatch::resolution() const {
  return std::chrono::nanoseconds(clock_ != nullptr ? 1 : tickLength());
}

Sight ProcessWatch::look(int pid, Process& process) {
  const auto used = clock_ != nullptr ? clock_(pid) : std::nullopt;
  if (clock_ != nullptr && !used && errno == EINVAL) return Sight::gone;
  const CpuReading now{.used = used.value_or(0), .at = std::chrono::steady_clock::now()};
  const bool stale = !used || isStale(process, now);
  const auto before = std::exchange(process.cpu, now);
  if (!stale) return Sight::unchanged;
  const auto sight = readStat(pid, process, used ? Source::clock : Source::ticks);
  if (sight != Sight::unreadable) return sight;
  // With a clock only the times and the name have to wait; without one nothing new is known.
  if (used && !process.name.empty()) return Sight::unchanged;
  process.cpu = before;
  return sight;
}

// A reused PID is not taken for the process that had it before: its clock starts at 0, so it is
// either behind the known reading, or level with it to the nanosecond (which the exclusion of 0
// leaves to a chance of one in millions), or ahead. Ahead of it by less than a tick it is told by
// its start time at the next look after `nameLasts`, a time in which the kernel, which hands out
// PIDs in turn, does not come round to the same one.
bool ProcessWatch::isStale(const Process& process, const CpuReading& now) const {
  if (process.name.empty() || now.used == 0) return true;
  if (now.used < process.cpu.used || now.used - process.usedAtStat >= stale_) return true;
  return now.used != process.usedAtName && now.at - process.nameAt >= nameLasts;
}

Sight ProcessWatch::readStat(int pid, Process& process, Source source) {
  const auto text = folder_.read(pid, "stat");
  if (!text && meansGone(errno)) return Sight::gone;
  const auto stat = text ? parseProcessStat(*text) : std::nullopt;
  if (!stat) {
    if (process.name.empty())
      noticeOnce("some processes are left out: their /proc/PID/stat cannot be read");
    return Sight::unreadable;
  }
  const bool started = process.name.empty() || process.startTicks != stat->startTicks;
  if (source == Source::ticks) {
    process.cpu.used = (stat->userTicks + stat->systemTicks) * tickLength();
  }
  process.parentPid = stat->parentPid;
  process.startTicks = stat->startTicks;
  process.userTicks = stat->userTicks;
  process.systemTicks = stat->systemTicks;
  process.virtualBytes = stat->virtualBytes;
  process.usedAtStat = process.cpu.used;
  if (started) process.name.clear();
  const auto commHash = std::hash<std::string_view>{}(stat->comm);
  const bool renamed = std::exchange(process.commHash, commHash) != commHash;
  if (started || renamed || nameIsOld(process)) readName(pid, process, *stat);
  return started ? Sight::started : Sight::read;
}

void ProcessWatch::readName(int pid, Process& process, const ProcessStat& stat) {
  process.nameAt = process.cpu.at;
  process.usedAtName = process.cpu.used;
  const std::string comm(stat.comm);  // the next read takes the buffer
  const bool hasArguments = stat.virtualBytes != 0;
  const auto cmdline = hasArguments ? folder_.read(pid, "cmdline") : "";
  // Unreadable, or empty as it is for a moment in the middle of an exec: worth another look.
  if (hasArguments && cmdline.value_or("").empty()) process.usedAtName = 0;
  if (cmdline || process.name.empty()) process.name = processName(cmdline.value_or(""), comm);
}
