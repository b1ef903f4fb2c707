#include <limits>
#include <memory>
#include <string>

#include "collectors.h"
#include "console.h"
#include "gpu_mon.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "sampling.h"
#include "splitline.h"

namespace {

/// A name with blanks would be taken for several columns.
std::string withoutBlanks(const std::string& name) {
  std::string joined;
  for (const auto& piece : splitline(name))
    joined += piece;
  return joined;
}

/// Whole MHz; what is no frequency at all is 0.
unsigned long wholeMegahertz(float frequency) {
  constexpr auto beyond = float(std::numeric_limits<unsigned long>::max());  // rounded up
  return frequency > 0 && frequency < beyond ? static_cast<unsigned long>(frequency) : 0;
}

void writeHeader(ResultFile& file, gpu::GPU_MON& monitor) {
  file.addText("Time(usec)", 10);
  for (const auto& header : monitor.corvane_getGPUHeaders()) {
    const std::string name = withoutBlanks(header);
    say(name + "\n");
    file.addText(name, name.size() + 3);
  }
  file.endLine();
  file.flush();
}

}  // namespace

void* startGPUProfiling(void* /*slot*/) {
  const auto monitor = std::make_unique<gpu::GPU_MON>();
  ResultFile file("gpuprofiler_");
  // Unlike the others it carries on for the live report: what it writes is lost.
  if (!file.isOpen()) say("Opening of the gpu_profiler file failed.\n");
  writeHeader(file, *monitor);
  say("Starting GPU profiling now.\n");

  const SampleClock clock;
  SampleTime time;
  while (timeLeft(time)) {
    monitor->corvane_getGPUSample();
    const float frequency = monitor->corvane_getGPUFrequency();
    const float busBusy = monitor->corvane_gpuBusBusy();
    const float utilization = monitor->corvane_getGPUUtilization();
    const float readBandwidth = monitor->corvane_getReadBandwidth();
    const float writeBandwidth = monitor->corvane_getWriteBandwidth();
    time = clock.now();
    file.addFixed(time.column, 10);
    file.addFixed(double(frequency), 15);
    file.addFixed(double(utilization), 18);
    file.addFixed(double(busBusy), 14);
    file.addFixed(double(readBandwidth), 23);
    file.addFixed(double(writeBandwidth), 24);
    file.endLine();
    file.flush();
    if (liveProfiling) {
      dataEndpoint->flushGPUSample(wholeMegahertz(frequency), utilization, 1);
    }
    if (!waitForNextSample(gpuSlot) || stopRequested) break;
  }
  return nullptr;
}
