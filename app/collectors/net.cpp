#include <vector>

#include "collectors.h"
#include "console.h"
#include "kept_monitor.h"
#include "net_mon.h"
#include "profiler_threads.h"
#include "result_file.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "sampling.h"

namespace {

/// The live report shows this interface, and as sent and received what its record has first; the
/// pairing is what the readers of the table are used to.
constexpr const char* liveInterface = "eth0";

void writeLine(ResultFile& file, double time, const net::netStats& interface) {
  file.addFixed(time, 20);
  file.addText(interface.name, 20);
  file.addInteger(interface.collisions, 20);
  file.addInteger(interface.txBytes, 20);
  file.addInteger(interface.rxBytes, 20);
  file.addInteger(interface.rxBytes, 20);  // the column "Tx_packets" carries it again, on purpose
  file.addInteger(interface.rxPackets, 20);
  file.addInteger(interface.txDropped, 20);
  file.addInteger(interface.rxDropped, 20);
  file.endLine();
}

}  // namespace

void* startNETProfiling(void* /*slot*/) {
  ResultFile file("netprofiler_");
  file.endUnlessOpen("The file could not be opened.\n\n");
  say("Strating the Network profiling\n");
  file.writeHeader({{"Time(usec)", 20},
                    {"Network_Interface", 20},
                    {"Collisions", 20},
                    {"Tx_bw(bytes)", 20},
                    {"Rx_bw(bytes)", 20},
                    {"Tx_packets", 20},
                    {"Rx_packets", 20},
                    {"Tx_packets(dropped)", 20},
                    {"Rx_packets(dropped)", 20}});
  auto& monitor = keptMonitor<net::NET_MON>();
  monitor.corvane_setSamplingTime(profilerThreads[netSlot].sampleTime);

  const SampleClock clock;
  SampleTime time;
  std::vector<net::netStats> interfaces;
  while (timeLeft(time)) {
    interfaces = monitor.corvane_getNetstats();
    time = clock.now();
    for (const auto& interface : interfaces) {
      writeLine(file, time.column, interface);
      if (liveProfiling && interface.name == liveInterface) {
        dataEndpoint->flushNETSample(interface.name, interface.collisions, interface.txBytes, 1);
      }
    }
    interfaces.clear();
    file.endLine();
    file.flush();
    if (stopRequested) break;
  }
  return nullptr;
}
