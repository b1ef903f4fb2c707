#include "process_watch.h"

#include <cerrno>
#include <functional>
#include <unistd.h>
#include <utility>

#include "notice.h"

namespace {

/// Of a process that goes on running `stat` is read once in this time, and a new name once more.
constexpr std::chrono::seconds statLasts{1};
/// A name that was found unchanged is read less often: `stat` tells most changes, and costs less.
constexpr std::chrono::seconds nameLasts{5};

Sight gone(Process& process) {
  const int pid = process.pid;
  process = Process();
  process.pid = pid;
  return Sight::gone;
}

}  // namespace

std::uint64_t tickLength() {
  static const auto length = std::uint64_t(1'000'000'000 / ::sysconf(_SC_CLK_TCK));
  return length;
}

std::chrono::nanoseconds ProcessWatch::resolution() const {
  return std::chrono::nanoseconds(clock_ != nullptr ? 1 : tickLength());
}

Sight ProcessWatch::look(Process& process) {
  const auto used = clock_ != nullptr ? clock_(process.pid) : std::nullopt;
  if (clock_ != nullptr && !used && errno == EINVAL) return gone(process);
  const CpuReading now{.used = used.value_or(0), .at = steadyNow()};
  const bool stale = !used || isStale(process, now);
  process.nameMayDiffer |= now.used != process.cpu.used;
  const auto before = std::exchange(process.cpu, now);
  if (!stale) return Sight::unchanged;
  const auto sight = readStat(process, used ? Source::clock : Source::ticks);
  if (sight != Sight::unreadable) return sight;
  // With a clock only the times and the name have to wait; without one nothing new is known.
  if (used && !process.name.empty()) return Sight::unchanged;
  process.cpu = before;
  return sight;
}

// A reused PID is not taken for the process that had it before. Its clock starts anew, so it is
// behind the known reading, or level with it to the nanosecond (a chance of one in millions, or for
// the moment in which neither has run yet), or ahead of it by less than a tick: then its start time
// tells at the latest after `statLasts`, and sooner than that no PID comes back, as the kernel
// hands them out in turn.
bool ProcessWatch::isStale(const Process& process, const CpuReading& now) const {
  if (process.name.empty() || now.used < process.cpu.used) return true;
  if (now.used - process.usedAtStat >= stale_) return true;
  if (now.used != process.usedAtStat && now.at - process.statAt >= statLasts) return true;
  return process.nameMayDiffer && now.at >= process.nameDue;
}

Sight ProcessWatch::readStat(Process& process, Source source) {
  const auto text = folder_.read(process.pid, "stat");
  if (!text && meansGone(errno)) return gone(process);
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
  const bool lostMemory = process.virtualBytes != 0 && stat->virtualBytes == 0;
  process.hasEnded = !started && (process.hasEnded || lostMemory);
  process.virtualBytes = stat->virtualBytes;
  process.usedAtStat = process.cpu.used;
  process.statAt = process.cpu.at;
  if (started) process.name.clear();
  const auto commHash = std::uint32_t(std::hash<std::string_view>{}(stat->comm));
  const bool renamed = std::exchange(process.commHash, commHash) != commHash;
  if (started || renamed || process.cpu.at >= process.nameDue) readName(process, *stat);
  return started ? Sight::started : Sight::read;
}

void ProcessWatch::readName(Process& process, const ProcessStat& stat) {
  process.nameMayDiffer = false;
  if (process.hasEnded) return;       // and stays who it was: what the kernel calls it says less
  const std::string comm(stat.comm);  // the next read takes the buffer
  const bool hasArguments = stat.virtualBytes != 0;
  const auto cmdline = hasArguments ? folder_.read(process.pid, "cmdline") : "";
  // Unreadable, or empty as it is for a moment in the middle of an exec: worth another look.
  process.nameMayDiffer = hasArguments && cmdline.value_or("").empty();
  auto name =
      cmdline || process.name.empty() ? processName(cmdline.value_or(""), comm) : process.name;
  process.nameDue = process.cpu.at + (name == process.name ? nameLasts : statLasts);
  process.name = std::move(name);
}
