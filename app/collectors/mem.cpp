#include <cstdint>

#include "collectors.h"
#include "kept_monitor.h"
#include "memory_mon.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "sampling.h"

namespace {

float percentOf(std::uint64_t part, std::uint64_t whole) {
  return float(part) / float(whole) * 100.0F;
}

void writeLine(ResultFile& file, double time, const std::uint64_t* kilobytes, float memUsage) {
  const std::uint64_t swapTotal = kilobytes[3];
  file.addFixed(time, 20);
  for (int i = 0; i < 3; ++i)
    file.addInteger(kilobytes[i], 20);
  file.addFixed(double(memUsage), 20, 3);
  for (int i = 3; i < 6; ++i)
    file.addInteger(kilobytes[i], 20);
  file.addFixed(swapTotal != 0 ? double(percentOf(kilobytes[5], swapTotal)) : 0, 20, 3);
  file.endLine();
  file.flush();
}

}  // namespace

void* startMEMProfiling(void* /*slot*/) {
  auto& monitor = keptMonitor<memory::MEMORY_MON>();
  ResultFile file("memprofiler_");
  file.endUnlessOpen("The mem profiler file is not opened.\n");
  file.writeHeader({{"Time(usec)", 20},
                    {"Total_Mem(KB)", 20},
                    {"Available_Mem(KB)", 20},
                    {"Used_Mem(KB)", 20},
                    {"Mem_Usage(%)", 20},
                    {"Swap_Total(KB)", 20},
                    {"Swap_Free(KB)", 20},
                    {"Swap_Used(KB)", 20},
                    {"Swap_Used(%)", 20}});

  const SampleClock clock;
  SampleTime time;
  while (timeLeft(time)) {
    const std::uint64_t* kilobytes = monitor.corvane_getMemStats();
    time = clock.now();
    const float memUsage = percentOf(kilobytes[2], kilobytes[0]);
    writeLine(file, time.column, kilobytes, memUsage);
    if (liveProfiling) dataEndpoint->flushMEMSample(memUsage, 1);
    if (!waitForNextSample(memSlot) || stopRequested) break;
  }
  return nullptr;
}
