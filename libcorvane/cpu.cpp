#include "cpu.h"

#include <array>

#include "counters.h"
#include "cpu_list.h"
#include "cpu_mon.h"
#include "kernel_file.h"
#include "notice.h"
#include "opaque.h"
#include "period.h"
#include "text_scan.h"

namespace {

CpuTicks parseTicks(std::string_view fields) {
  std::array<std::uint64_t, 8> values{};
  for (auto& value : values)
    value = nextNumber(fields).value_or(0);
  const auto [user, nice, system, idle, iowait, irq, softirq, steal] = values;
  return {.online = true,
          .busy = user + nice + system + irq + softirq,
          .idle = idle,
          .iowait = iowait,
          .steal = steal};
}

/// Ticks between two readings.
struct Passed {
  std::uint64_t busy = 0, steal = 0, all = 0;

  Passed& operator+=(const Passed& other) {
    busy += other.busy;
    steal += other.steal;
    all += other.all;
    return *this;
  }
};

Passed passedBetween(const CpuTicks& before, const CpuTicks& now) {
  const auto busy = advance(before.busy, now.busy);
  const auto steal = advance(before.steal, now.steal);
  const auto idle = advance(before.idle, now.idle) + advance(before.iowait, now.iowait);
  return {.busy = busy, .steal = steal, .all = busy + steal + idle};
}

void setShare(const Passed& passed, CpuShare& share) {
  if (passed.all == 0) return;
  share = {.usage = 100.0 * double(passed.busy) / double(passed.all),
           .steal = 100.0 * double(passed.steal) / double(passed.all)};
}

Passed updateShare(const CpuTicks& before, const CpuTicks& now, CpuShare& share) {
  if (!before.online || !now.online) {
    share = {};
    return {};
  }
  const auto passed = passedBetween(before, now);
  setShare(passed, share);
  return passed;
}

}  // namespace

void parseCpuTicks(std::string_view stat, std::vector<CpuTicks>& ticks) {
  for (auto& core : ticks)
    core.online = false;
  std::string_view line;
  while (nextLine(stat, line) && line.starts_with("cpu")) {
    const auto suffix = nextWord(line).substr(3);
    const auto core = toNumber<std::size_t>(suffix);
    if (!suffix.empty() && !core) continue;
    const std::size_t element = core ? *core + 1 : 0;
    if (element < ticks.size()) ticks[element] = parseTicks(line);
  }
}

void updateShares(const std::vector<CpuTicks>& before, const std::vector<CpuTicks>& now,
                  std::vector<CpuShare>& shares) {
  Passed all;
  bool coresAreTold = false;
  for (std::size_t i = 1; i < shares.size(); ++i) {
    coresAreTold |= now[i].online;
    all += updateShare(before[i], now[i], shares[i]);
  }
  if (coresAreTold) {
    setShare(all, shares[0]);
  } else {
    updateShare(before[0], now[0], shares[0]);
  }
}

std::size_t possibleCpus() {
  const auto possible =
      parseCpuList(readAttribute("/sys/devices/system/cpu/possible").value_or(""));
  return possible.empty() ? 0 : std::size_t(possible.back()) + 1;
}

namespace cpu {

namespace {

struct State {
  KernelFile stat{"/proc/stat"};
  Period period;
  std::vector<CpuTicks> before, now;
  std::vector<CpuShare> shares;
  std::vector<double> usage, steal;  // two arrays: they are read together

  explicit State(std::size_t cores)
      : before(cores + 1), now(cores + 1), shares(cores + 1), usage(cores + 1), steal(cores + 1) {}

  bool read() {
    const auto text = stat.readOnce();
    if (!text) {
      noticeOnce("no processor load: /proc/stat cannot be read");
      return false;
    }
    parseCpuTicks(*text, now);
    return true;
  }
};

}  // namespace

CPU_MON::CPU_MON() : coreCount(int(possibleCpus())) {
  auto* state = new State(std::size_t(coreCount));
  attach(opaque_, state);
  if (state->read()) state->before.swap(state->now);
}

CPU_MON::~CPU_MON() {
  delete &attached<State>(opaque_);
}

void CPU_MON::corvane_setSamplingTime(int milliseconds) {
  attached<State>(opaque_).period.start(milliseconds);
}

double* CPU_MON::corvane_getPerCoreUsage() {
  auto& state = attached<State>(opaque_);
  state.period.wait();
  if (!state.read()) return state.usage.data();
  updateShares(state.before, state.now, state.shares);
  for (std::size_t i = 0; i < state.shares.size(); ++i) {
    state.usage[i] = state.shares[i].usage;
    state.steal[i] = state.shares[i].steal;
  }
  state.before.swap(state.now);
  return state.usage.data();
}

double* CPU_MON::corvane_getPerCoreStealTime() {
  return attached<State>(opaque_).steal.data();
}

}  // namespace cpu
