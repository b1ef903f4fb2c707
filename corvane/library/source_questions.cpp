#include "source_questions.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <time.h>

#include "cpu_mon.h"
#include "ddr_mon.h"
#include "disk_mon.h"
#include "dsp_mon.h"
#include "gpu_mon.h"
#include "memory_mon.h"
#include "net_mon.h"
#include "perprocmem_mon.h"
#include "process_mon.h"

namespace {

/// The answer of a period that has passed at once.
int noWait(int /*slot*/) {
  return ETIMEDOUT;
}

// The monitors are not destroyed: the process that asks ends with the answer.

SourceAnswer askCpu(bool) {
  const auto& monitor = *new cpu::CPU_MON;
  return {.there = monitor.coreCount > 0, .count = monitor.coreCount};
}

SourceAnswer askGpu(bool) {
  auto& monitor = *new gpu::GPU_MON;
  return {.there = monitor.corvane_getGPUSample() == 0};
}

template <int slot>
SourceAnswer askDsp(bool) {
  auto& monitor = *new dsp::DSP_MON(slot, noWait);
  return {.there = monitor.corvane_getDSPSample() == 0};
}

/// The interface has no word for "none": a machine whose memory has no traffic at all in two
/// milliseconds does not count it.
SourceAnswer askDdr(bool) {
  auto& monitor = *new ddr::DDR_MON;
  monitor.corvane_setSamplingTime(2);
  const timespec time{.tv_sec = 0, .tv_nsec = 2'000'000};
  nanosleep(&time, nullptr);
  const auto* const figures = monitor.corvane_getDDRStats();
  return {.there = std::any_of(figures, figures + 6, [](auto figure) { return figure != 0; })};
}

SourceAnswer askMem(bool) {
  auto& monitor = *new memory::MEMORY_MON;
  return {.there = monitor.corvane_getMemStats()[0] != 0};
}

SourceAnswer askProc(bool) {
  auto& monitor = *new process::PROCESS_MON(noWait);
  monitor.corvane_setSamplingTime(0);
  const auto count = int(monitor.corvane_getProcessStats().size());
  return {.there = count > 0, .count = count};
}

SourceAnswer askIo(bool) {
  auto& monitor = *new diskio::DISK_MON(noWait);
  monitor.corvane_setSamplingTime(0);
  monitor.corvane_getIOStats();
  const int count = monitor.corvane_getNumOfIOStats();
  return {.there = count > 0, .count = count};
}

/// The kernel walks every page of every process for a full answer.
SourceAnswer askProcmem(bool thorough) {
  auto& monitor = *new procmem::PERPROCMEM_MON;
  if (!thorough) return {.there = true};
  const auto count = int(monitor.corvane_getPerProcessMemStats().size());
  return {.there = count > 0, .count = count};
}

SourceAnswer askNet(bool) {
  auto& monitor = *new net::NET_MON;
  monitor.corvane_setSamplingTime(0);
  const auto count = int(monitor.corvane_getNetstats().size());
  return {.there = count > 0, .count = count};
}

constexpr std::array sources{
    ProfilerSource{"cpu", "load of the processor cores", "cores", askCpu},
    ProfilerSource{"gpu", "clock and load of the graphics processor", "", askGpu},
    ProfilerSource{"adsp", "clock and load of the audio DSP", "", askDsp<2>},
    ProfilerSource{"cdsp", "clock and load of the compute DSP", "", askDsp<3>},
    ProfilerSource{"ddr", "traffic of last-level cache and memory", "", askDdr},
    ProfilerSource{"mem", "memory and swap", "", askMem},
    ProfilerSource{"proc", "processor time of every process", "processes", askProc},
    ProfilerSource{"io", "traffic of the disks", "disks", askIo},
    ProfilerSource{"procmem", "memory of every process", "processes", askProcmem},
    ProfilerSource{"net", "traffic of the network interfaces", "interfaces", askNet},
};

}  // namespace

const std::span<const ProfilerSource> profilerSources = sources;
