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

CpuShare cpuShare(const CpuTicks& before, const CpuTicks& now, const CpuShare& last) {
  if (!before.online || !now.online) return {};
  const auto busy = advance(before.busy, now.busy);
  const auto steal = advance(before.steal, now.steal);
  const auto passed =
      busy + steal + advance(before.idle, now.idle) + advance(before.iowait, now.iowait);
  if (passed == 0) return last;
  return {.usage = 100.0 * double(busy) / double(passed),
          .steal = 100.0 * double(steal) / double(passed)};
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
  for (std::size_t i = 0; i < state.shares.size(); ++i) {
    state.shares[i] = cpuShare(state.before[i], state.now[i], state.shares[i]);
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
