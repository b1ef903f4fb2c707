#include "process.h"

#include <algorithm>
#include <unistd.h>
#include <utility>

#include "cpu_list.h"
#include "opaque.h"
#include "process_mon.h"

double usageBetween(const CpuReading& before, const CpuReading& now, double cores) {
  if (now.used <= before.used || now.at <= before.at) return 0;
  const std::chrono::duration<double, std::nano> passed = now.at - before.at;
  return std::min(double(now.used - before.used) / passed.count(), cores);
}

double OnlineCores::count() {
  const auto text = file_.isOpen() ? file_.readOnce() : std::nullopt;
  if (!text) return double(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));
  if (count_ == 0 || *text != text_) {
    text_ = *text;
    const auto line = text->substr(0, text->find('\n'));
    count_ = double(std::max<std::size_t>(1, parseCpuList(line).size()));
  }
  return count_;
}

namespace process {

namespace {

constexpr int slot = 7;
constexpr int goOn = 110;

struct Watched {
  Process process;
  CpuReading before;  ///< start of the period that `usage` speaks of
  double usage = 0;
};

std::uint64_t ticksSinceBoot() {
  return std::uint64_t(timeSinceBoot().count()) / tickLength();
}

procStats toRecord(const Watched& watched) {
  const double tick = double(tickLength()) / 1e9;
  const auto& process = watched.process;
  procStats record{};
  record.pid = process.pid;
  process.name.copy(record.name, sizeof record.name - 1);
  record.userTime = double(process.userTicks) * tick;
  record.systemTime = double(process.systemTicks) * tick;
  record.totalTime = double(process.userTicks + process.systemTicks) * tick;
  record.usage = watched.usage;
  return record;
}

struct State {
  int (*wait)(int);
  std::vector<int> listed;
  bool hasList;
  ProcessWatch watch{tickLength()};
  OnlineCores cores;
  std::vector<Watched> known;
  SteadyTime sampledAt;
  std::uint64_t sampledAtTick = ~std::uint64_t(0);

  State(int (*callback)(int), std::vector<int> pids, bool onlyThese)
      : wait(callback), listed(std::move(pids)), hasList(onlyThese) {
    readAll(hasList ? watch.folder().only(listed) : watch.folder().all());
  }

  void readAll(const std::vector<int>& pids) {
    const auto now = steadyNow();
    const auto tick = ticksSinceBoot();
    const double online = cores.count();
    follow(known, pids);
    for (auto& watched : known) {
      const auto sight = watch.look(watched.process);
      if (sight == Sight::started) begin(watched, online);
      if (sight == Sight::unchanged || sight == Sight::read) advance(watched, online);
    }
    sampledAt = now;
    sampledAtTick = tick;
  }

  /// All that a process has used belongs to the period when it started within it; an older one has
  /// no reading from the start of the period.
  void begin(Watched& watched, double online) const {
    const auto& now = watched.process.cpu;
    const bool startedInPeriod = watched.process.startTicks >= sampledAtTick;
    watched.usage = startedInPeriod ? usageBetween({.used = 0, .at = sampledAt}, now, online) : 0;
    watched.before = now;
  }

  void advance(Watched& watched, double online) const {
    const auto& now = watched.process.cpu;
    if (now.at - watched.before.at < watch.resolution()) return;
    watched.usage = usageBetween(watched.before, now, online);
    watched.before = now;
  }

  std::vector<procStats> records() const {
    std::vector<procStats> all;
    all.reserve(known.size());
    for (const auto& watched : known) {
      if (!watched.process.name.empty()) all.push_back(toRecord(watched));
    }
    return all;
  }
};

}  // namespace

PROCESS_MON::PROCESS_MON(int (*wait)(int), std::vector<int> pids) {
  attach(opaque_, new State(wait, std::move(pids), true));
}

PROCESS_MON::PROCESS_MON(int (*wait)(int)) {
  attach(opaque_, new State(wait, {}, false));
}

PROCESS_MON::~PROCESS_MON() {
  delete &attached<State>(opaque_);
}

void PROCESS_MON::corvane_setSamplingTime(int) {
  auto& state = attached<State>(opaque_);
  auto& folder = state.watch.folder();
  state.readAll(state.hasList ? folder.only(state.listed) : folder.all());
}

std::vector<procStats> PROCESS_MON::corvane_getProcessStats(std::vector<int> pids) {
  auto& state = attached<State>(opaque_);
  if (state.wait(slot) != goOn) return {};
  state.readAll(state.watch.folder().only(pids));
  return state.records();
}

std::vector<procStats> PROCESS_MON::corvane_getProcessStats() {
  auto& state = attached<State>(opaque_);
  if (state.wait(slot) != goOn) return {};
  state.readAll(state.watch.folder().all());
  return state.records();
}

}  // namespace process
