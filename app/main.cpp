#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <string>

#include "console.h"
#include "dataendpoint.h"
#include "end_process.h"
#include "options.h"
#include "profiler_threads.h"
#include "result_folder.h"
#include "run_parameters.h"
#include "run_signals.h"
#include "summary.h"
#include "toCsv.h"
#include "toJson.h"
#include "virtual_counter.h"

namespace {

void printStart() {
  std::cout << std::fixed << std::setprecision(3);
  char line[64];
  std::snprintf(line, sizeof line, "qtime start = %.3f\n", virtualCounterMicroseconds());
  say(line);
}

void numberSlots() {
  for (int number = 0; number < slotCount; ++number) {
    auto& slot = profilerThreads[number];
    if (slot.threadFunc == nullptr) continue;
    slot.index = number;
    slot.sampleTime = 0;
  }
}

void checkCounterRate() {
  const auto rate = virtualCounterRate();
  if (!qtimerEnabled || rate == 19'200'000) return;
  warn("--qtimer: this processor's counter runs at " + std::to_string(rate) +
       " Hz, not at 19200000: the times are its ticks / 19.2, not microseconds");
}

void chooseSuffix(bool fileGiven) {
  if (!fileGiven) {
    say("Setting filename to current time\n");
    filename = getCurrentTime();
    std::replace(filename.begin(), filename.end(), ':', '_');
    std::replace(filename.begin(), filename.end(), '.', '-');
  }
  say("Filename " + filename + "\n");
}

/// A source that is off counts as always ready, so that it never holds a row back.
void live_report_init() {
  const struct {
    Slot slot;
    void (DATAENDPOINT::*on)();
    void (DATAENDPOINT::*off)();
  } sources[] = {
      {cpuSlot, &DATAENDPOINT::setCPUProfiler, &DATAENDPOINT::setCPUSample},
      {gpuSlot, &DATAENDPOINT::setGPUProfiler, &DATAENDPOINT::setGPUSample},
      {adspSlot, &DATAENDPOINT::setADSPProfiler, &DATAENDPOINT::setADSPSample},
      {cdspSlot, &DATAENDPOINT::setCDSPProfiler, &DATAENDPOINT::setCDSPSample},
      {ddrSlot, &DATAENDPOINT::setDDRProfiler, &DATAENDPOINT::setDDRSample},
      {memSlot, &DATAENDPOINT::setMEMProfiler, &DATAENDPOINT::setMEMSample},
      {netSlot, &DATAENDPOINT::setNETProfiler, &DATAENDPOINT::setNETSample},
  };
  for (const auto& source : sources) {
    (dataEndpoint->*(profilerThreads[source.slot].enabled != 0 ? source.on : source.off))();
  }
}

void startCollectors() {
  if (startThreads() == 0) return;
  say("Start threads failed!\n");
  // Not deleted: collectors that did start may be in the middle of a hand-off.
  dataEndpoint->close();
  endProcess(0);
}

void waitForCollectors() {
  waitForRunEnd();
  if (stopRequested) notifyThreadsExit();
  waitThreads();
}

void convertResults() {
  if (jsonFile) {
    say("Starting JSON conversion\n");
    jsonConvert(runFolder());
  }
  if (csvFile) {
    say("Starting CSV conversion\n");
    csvConvert(runFolder());
  }
  getSummary(runFolder());
}

}  // namespace

int main(int argc, char** argv) {
  prepareConsole();
  printStart();
  if (argc == 1) help(argv[0]);
  numberSlots();
  const bool fileGiven = parseOptions(argc, argv);
  update_default_sample_time();
  if (dump_parameters() != 0) endProcess(0);

  dataEndpoint = new DATAENDPOINT;
  dataEndpoint->writeRowsBy(sayAtOnceOrNever);
  signal_setup();
  checkCounterRate();  // not before: with standard error gone it would be the end by SIGPIPE
  chooseSuffix(fileGiven);
  setupDirectoryStructure();
  live_report_init();

  startCollectors();
  dataEndpoint->setHeaders();
  waitForCollectors();
  delete dataEndpoint;
  say("Profiling done\n");

  convertResults();
  endProcess(0);
}
