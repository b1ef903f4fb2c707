#include <cstdint>
#include <memory>

#include "collectors.h"
#include "console.h"
#include "ddr_mon.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "sampling.h"

void* startDDRProfiling(void* /*slot*/) {
  auto monitor = std::make_unique<ddr::DDR_MON>();
  ResultFile file("ddrprofiler_");
  file.endUnlessOpen("The file could not be opened.\n\n");
  file.writeHeader({{"Time(usec)", 10},
                    {"llcc_rd(MB/s)", 20},
                    {"llcc_wr(MB/s)", 20},
                    {"llcc_total(MB/s)", 20},
                    {"cabo_rd(MB/s)", 20},
                    {"cabo_wr(MB/s)", 20},
                    {"cabo_total(MB/s)", 20}});
  say("Starting ddr profiler.\n");
  monitor->corvane_setSamplingTime(profilerThreads[ddrSlot].sampleTime);

  const SampleClock clock;
  SampleTime time;
  while (timeLeft(time)) {
    const std::int64_t* bandwidths = monitor->corvane_getDDRStats();
    time = clock.now();
    // Readers of this file expect the time in the stream's own notation, from 1e+06 on as such.
    file.addGeneral(time.column, 10);
    for (int i = 0; i < 6; ++i)
      file.addInteger(bandwidths[i], 20);
    file.endLine();
    file.flush();
    if (liveProfiling) dataEndpoint->flushDDRSample(static_cast<int>(bandwidths[5]), 1);
    if (!waitForNextSample(ddrSlot) || stopRequested) break;
  }
  monitor.reset();  // before the file closes
  return nullptr;
}
