#include "procmem.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>
#include <unistd.h>

#include "notice.h"
#include "opaque.h"
#include "perprocmem_mon.h"
#include "process_watch.h"
#include "text_scan.h"

std::optional<ResidentMemory> parseRollup(std::string_view text) {
  std::optional<std::uint64_t> resident, proportional, clean, dirty;
  std::string_view line;
  while (nextLine(text, line)) {
    const auto key = nextWord(line);
    if (key == "Rss:") resident = nextNumber(line);
    if (key == "Pss:") proportional = nextNumber(line);
    if (key == "Private_Clean:") clean = nextNumber(line);
    if (key == "Private_Dirty:") dirty = nextNumber(line);
  }
  if (!resident || !proportional || !clean || !dirty) return std::nullopt;
  return ResidentMemory{
      .resident = *resident, .proportional = *proportional, .unique = *clean + *dirty};
}

std::optional<MemorySize> parseStatm(std::string_view text, std::uint64_t pageSize) {
  const auto pages = nextNumber(text);
  const auto resident = nextNumber(text);
  if (!pages || !resident) return std::nullopt;
  return MemorySize{.virtualSize = *pages * pageSize / 1024,
                    .resident = *resident * pageSize / 1024};
}

namespace procmem {

namespace {

/// What a process holds that has not run is changed by others alone, who share its pages or reclaim
/// them. The kernel walks all of them for an answer and keeps the process from its memory map
/// meanwhile, so that it is asked again only after this time: two seconds, less what a period of
/// that length may fall short.
constexpr std::chrono::milliseconds memoryLasts{1900};

struct Watched {
  Process process;
  Sight sight = Sight::gone;  ///< what this sample's look has shown
  ResidentMemory memory;
  std::optional<SteadyTime> measuredAt;  ///< none: `memory` holds no values of this process
  bool denied = false;                   ///< its smaps_rollup; stands until the process runs again

  bool statIsFresh() const { return sight == Sight::started || sight == Sight::read; }
  bool mustMeasure() const {
    return !measuredAt || sight != Sight::unchanged || process.cpu.at - *measuredAt >= memoryLasts;
  }
  void keep(const ResidentMemory& now) {
    memory = now;
    measuredAt = process.cpu.at;
  }
};

bool meansTooManyFiles(int error) {
  return error == EMFILE || error == ENFILE;
}

procMemStats toRecord(const Watched& watched) {
  return {.pid = watched.process.pid,
          .parentPid = watched.process.parentPid,
          .name = watched.process.name,
          .vss = watched.process.virtualBytes / 1024,
          .pss = watched.memory.proportional,
          .rss = watched.memory.resident,
          .uss = watched.memory.unique};
}

struct State {
  ProcessWatch watch{1};
  std::vector<Watched> known;
  const std::uint64_t pageSize = std::uint64_t(::sysconf(_SC_PAGESIZE));

  /// `everyTime`: whoever is listed is measured anew, run or not.
  std::vector<procMemStats> sample(const std::vector<int>& pids, bool everyTime) {
    std::vector<procMemStats> records;
    lookAtAll(pids);
    records.reserve(known.size());
    for (auto& watched : known) {
      // Not a kernel thread or a zombie, which have no memory of their own.
      if (watched.process.virtualBytes == 0) continue;
      if (!watched.statIsFresh() && !parentStands(watched.process)) {
        watch.readStat(watched.process);
      }
      const bool stands = !everyTime && !watched.mustMeasure();
      if (stands || readMemory(watched)) records.push_back(toRecord(watched));
    }
    return records;
  }

  void lookAtAll(const std::vector<int>& pids) {
    follow(known, pids);
    for (auto& watched : known) {
      watched.sight = watch.look(watched.process);
      if (watched.sight == Sight::started) watched.measuredAt.reset();
      if (watched.statIsFresh()) watched.denied = false;
    }
  }

  /// A process gets another parent without running itself, but only when the one it had ends. Who
  /// is younger than the child has taken over the PID of the parent.
  bool parentStands(const Process& process) const {
    const auto byPid = [](const Watched& watched) { return watched.process.pid; };
    const auto found = std::ranges::lower_bound(known, process.parentPid, {}, byPid);
    if (found == known.end() || found->process.pid != process.parentPid) return false;
    const auto& parent = found->process;
    return parent.virtualBytes != 0 && parent.startTicks <= process.startTicks;
  }

  /// False where the process has ended or has lost its memory since the look.
  bool readMemory(Watched& watched) {
    if (watched.denied) return readSize(watched);
    auto& process = watched.process;
    const auto text = watch.folder().read(process.pid, "smaps_rollup");
    if (!text && meansTooManyFiles(errno)) return watched.measuredAt.has_value();
    if (!text && errno == ESRCH) return lost(watched);
    const auto memory = text ? parseRollup(*text) : std::nullopt;
    if (!memory) return readSize(watched);
    watched.keep(*memory);
    // More than all: an exec came between the two readings.
    if (memory->resident > process.virtualBytes / 1024) watch.readStat(process);
    return process.virtualBytes != 0 || lost(watched);
  }

  /// For a process whose pages may not be looked at.
  bool readSize(Watched& watched) {
    const auto text = watch.folder().read(watched.process.pid, "statm");
    if (!text && !meansGone(errno)) return watched.measuredAt.has_value();
    const auto size = text ? parseStatm(*text, pageSize) : std::nullopt;
    if (!size || size->virtualSize == 0) return lost(watched);
    noticeOnce("PSS and USS of some processes read 0: their /proc/PID/smaps_rollup cannot be read");
    watched.denied = true;
    watched.process.virtualBytes = size->virtualSize * 1024;
    watched.keep({.resident = size->resident, .proportional = 0, .unique = 0});
    return true;
  }

  /// What is known is not handed out once more.
  static bool lost(Watched& watched) {
    watched.measuredAt.reset();
    return false;
  }
};

}  // namespace

PERPROCMEM_MON::PERPROCMEM_MON() {
  attach(opaque_, new State);
}

PERPROCMEM_MON::~PERPROCMEM_MON() {
  delete &attached<State>(opaque_);
}

std::vector<procMemStats> PERPROCMEM_MON::corvane_getPerProcessMemStats(std::vector<int> pids) {
  auto& state = attached<State>(opaque_);
  return state.sample(state.watch.folder().only(pids), true);
}

std::vector<procMemStats> PERPROCMEM_MON::corvane_getPerProcessMemStats() {
  auto& state = attached<State>(opaque_);
  return state.sample(state.watch.folder().all(), false);
}

}  // namespace procmem
