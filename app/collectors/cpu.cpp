#include <string>

#include "collectors.h"
#include "console.h"
#include "cpu_mon.h"
#include "kept_monitor.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "sampling.h"

namespace {

/// The monitor says with a total below this that sampling has to stop.
constexpr double stopTotal = -0.02;

void writeHeader(ResultFile& file, int cores) {
  file.addText("Time(usec)", 15);
  file.addText("TotalCPU", 15);
  for (int i = 0; i < cores; ++i)
    file.addText("cpu" + std::to_string(i) + "(%)", 15);
  file.addText("CPUStealTime(%)", 20);
  for (int i = 0; i < cores; ++i)
    file.addText("cpu" + std::to_string(i) + "steal(%)", 15);
  file.endLine();
  file.flush();
}

void writeLine(ResultFile& file, double time, int cores, const double* usage, const double* steal) {
  file.addFixed(time, 15);
  file.addFixed(usage[0], 15);
  for (int i = 1; i <= cores; ++i)
    file.addFixed(usage[i], 15);
  file.addFixed(steal[0], 20);
  for (int i = 1; i <= cores; ++i)
    file.addFixed(steal[i], 15);
  file.endLine();
  file.flush();
}

}  // namespace

void* startCPUProfiling(void* /*slot*/) {
  auto& monitor = keptMonitor<cpu::CPU_MON>();
  const int cores = monitor.coreCount;
  monitor.corvane_setSamplingTime(profilerThreads[cpuSlot].sampleTime);
  ResultFile file("cpuprofiler_");
  file.endUnlessOpen("The file could not be opened.\n\n");
  writeHeader(file, cores);
  say("Starting cpu profiler.\n");

  const SampleClock clock;
  SampleTime time;
  while (timeLeft(time)) {
    const double* usage = monitor.corvane_getPerCoreUsage();
    const double* steal = monitor.corvane_getPerCoreStealTime();
    if (usage[0] < stopTotal || stopRequested) break;
    time = clock.now();
    writeLine(file, time.column, cores, usage, steal);
    if (liveProfiling) dataEndpoint->flushCPUSample(usage[0], 1);
  }
  return nullptr;
}
