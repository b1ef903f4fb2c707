#include <algorithm>
#include <string>
#include <vector>

#include "collectors.h"
#include "console.h"
#include "kept_monitor.h"
#include "perprocmem_mon.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "sampling.h"

namespace {

void writeBlock(ResultFile& file, double time, std::vector<procmem::procMemStats>& processes) {
  for (auto& process : processes) {
    std::replace(process.name.begin(), process.name.end(), ' ', '_');
    file.addFixed(time, 20);
    file.addInteger(process.pid, 10);
    file.addInteger(process.parentPid, 10);
    file.addText(process.name, 40);
    file.addInteger(process.vss, 40);
    file.addInteger(process.pss, 40);
    file.addInteger(process.rss, 40);
    file.addInteger(process.uss, 40);
    file.endLine();
  }
  file.endLine();
  file.endLine();
  file.flush();
}

}  // namespace

void* startPROCMEMProfiling(void* /*slot*/) {
  auto& monitor = keptMonitor<procmem::PERPROCMEM_MON>();
  ResultFile file("procmem-profiler_");
  if (!file.isOpen()) {
    // Unlike the others it ends alone: the run goes on.
    say("The procmem file is not opened.\n");
    return nullptr;
  }
  file.writeHeader({{"Time(usec)", 20},
                    {"PID", 10},
                    {"PPID", 10},
                    {"ProcessName", 40},
                    {"VSS(KB)", 40},
                    {"PSS(KB)", 40},
                    {"RSS(KB)", 40},
                    {"USS(KB)", 40}});
  say("Starting Per Process Memory profiling now.\n");

  const SampleClock clock;
  SampleTime time;
  while (timeLeft(time)) {
    auto processes = pidListEnabled ? monitor.corvane_getPerProcessMemStats(pidList)
                                    : monitor.corvane_getPerProcessMemStats();
    if (processes.empty() || stopRequested) break;
    time = clock.now();
    writeBlock(file, time.column, processes);
    if (!waitForNextSample(procmemSlot) || stopRequested) break;
  }
  return nullptr;
}
