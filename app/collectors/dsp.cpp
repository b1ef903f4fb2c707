#include <string>

#include "collectors.h"
#include "console.h"
#include "dsp_mon.h"
#include "kept_monitor.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "sampling.h"

namespace {

void handOver(int slot, float load, long frequency) {
  if (slot == adspSlot) {
    dataEndpoint->flushADSPSample(load, frequency, 1);
  } else {
    dataEndpoint->flushCDSPSample(load, frequency, 1);
  }
}

}  // namespace

void* startDSPProfiling(void* slotOfThread) {
  const auto& slot = *static_cast<const ProfilerThread*>(slotOfThread);
  auto& monitor = keptMonitor<dsp::DSP_MON>(slot.index, cond_timedwait);
  ResultFile file(slot.name + std::string("profiler_"));
  file.endUnlessOpen("The dsp profiler file is not opened.\n");
  file.writeHeader({{"Time(usec)", 20}, {"dsp_freq(Hz)", 14}, {"dsp_load(%)", 12}});
  say("Starting DSP profiling now.\n");

  const SampleClock clock;
  SampleTime time;
  while (timeLeft(time)) {
    if (monitor.corvane_getDSPSample() != 0 || stopRequested) break;
    const long frequency = monitor.corvane_getDSPFrequency();
    const float load = monitor.corvane_getDSPUtilization();
    time = clock.now();
    file.addFixed(time.column, 20);
    file.addInteger(frequency, 14);
    file.addFixed(double(load), 12);
    file.endLine();
    file.flush();
    if (liveProfiling) handOver(slot.index, load, frequency);
  }
  return nullptr;
}
