#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "collectors.h"
#include "console.h"
#include "kept_monitor.h"
#include "process_mon.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "sampling.h"

namespace {

process::PROCESS_MON& makeMonitor() {
  auto& monitor = pidListEnabled ? keptMonitor<process::PROCESS_MON>(cond_timedwait, pidList)
                                 : keptMonitor<process::PROCESS_MON>(cond_timedwait);
  monitor.corvane_setSamplingTime(profilerThreads[procSlot].sampleTime);
  return monitor;
}

void writeBlock(ResultFile& file, double time, const std::vector<process::procStats>& processes) {
  std::string name;
  for (const auto& process : processes) {
    name.assign(process.name, strnlen(process.name, sizeof process.name));
    std::replace(name.begin(), name.end(), ' ', '_');
    std::replace(name.begin(), name.end(), ',', '_');
    file.addFixed(time, 20);
    file.addInteger(process.pid, 10);
    file.addText(name, 40);
    file.addFixed(process.userTime, 20);
    file.addFixed(process.systemTime, 20);
    file.addFixed(process.totalTime, 20);
    file.addFixed(process.usage * 100, 20);
    file.endLine();
  }
  file.endLine();
  file.endLine();
  file.flush();
}

}  // namespace

void* startPROCProfiling(void* /*slot*/) {
  say("Starting the per process profiling\n");
  auto& monitor = makeMonitor();
  ResultFile file("procprofiler_");
  file.endUnlessOpen("The file could not be opened.\n\n");
  file.writeHeader({{"Time(usec)", 20},
                    {"PID", 10},
                    {"ProcessName", 40},
                    {"UserTime", 20},
                    {"SystemTime", 20},
                    {"TotalTime", 20},
                    {"CPU_Usage(%)", 20}});

  const SampleClock clock;
  SampleTime time;
  while (timeLeft(time)) {
    const auto processes = pidListEnabled ? monitor.corvane_getProcessStats(pidList)
                                          : monitor.corvane_getProcessStats();
    if (processes.empty() || stopRequested) break;
    time = clock.now();
    writeBlock(file, time.column, processes);
  }
  return nullptr;
}
