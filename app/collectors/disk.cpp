#include <cstdint>
#include <cstring>
#include <vector>

#include "collectors.h"
#include "console.h"
#include "disk_mon.h"
#include "kept_monitor.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "sampling.h"

namespace {

/// KB (1024 bytes) per second over the nominal period, truncated to a whole number.
double rate(std::uint64_t sectors, int milliseconds) {
  const auto divisor = static_cast<std::uint64_t>(std::int64_t{milliseconds} * 1024);
  const std::uint64_t whole = divisor == 0 ? 0 : sectors * 512'000 / divisor;
  return double(whole);
}

void writeBlock(ResultFile& file, double time, const std::vector<diskio::diskStats>& disks,
                int count, int milliseconds) {
  for (int i = 0; i < count; ++i) {
    const auto& disk = disks.at(std::size_t(i));
    file.addFixed(time, 20);
    file.addText({disk.name, strnlen(disk.name, sizeof disk.name)}, 20);
    file.addInteger(disk.sectorsRead * 512, 20);
    file.addFixed(rate(disk.sectorsRead, milliseconds), 20);
    file.addInteger(disk.sectorsWritten * 512, 20);
    file.addFixed(rate(disk.sectorsWritten, milliseconds), 20);
    file.endLine();
  }
  file.endLine();
  file.flush();
}

}  // namespace

void* startDISKProfiling(void* /*slot*/) {
  const int milliseconds = profilerThreads[diskSlot].sampleTime;
  auto& monitor = keptMonitor<diskio::DISK_MON>(cond_timedwait);
  monitor.corvane_setSamplingTime(milliseconds);
  ResultFile file("diskioprofiler_");
  file.endUnlessOpen("The diskio profiler file is not opened.\n");
  file.writeHeader({{"Time(usec)", 20},
                    {"Device", 20},
                    {"Bytes_read", 20},
                    {"KB_read/s", 20},
                    {"Bytes_write", 20},
                    {"KB_write/s", 20}});
  say("Starting disk profiling now.\n");

  const SampleClock clock;
  SampleTime time;
  while (timeLeft(time)) {
    // The stop flag is the monitor's to see: it then reports no device.
    const auto* disks = monitor.corvane_getIOStats();
    const int count = monitor.corvane_getNumOfIOStats();
    if (count < 1) {
      say("warning: num_disk_stats is 0\n");
      break;
    }
    time = clock.now();
    writeBlock(file, time.column, *disks, count, milliseconds);
  }
  say("disk profiling exits now.\n");
  return nullptr;
}
