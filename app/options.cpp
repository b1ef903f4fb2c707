#include "options.h"

#include <cstdlib>
#include <getopt.h>
#include <sstream>
#include <string>

#include "console.h"
#include "end_process.h"
#include "profiler_threads.h"
#include "run_parameters.h"
#include "version_report.h"

namespace {

constexpr int noSlot = -1;

/// As atoi, but defined for numbers that are too large.
int toInt(const char* text) {
  return int(std::strtol(text, nullptr, 10));
}

/// What an option does: `slot` is its source's, `argument` the text that follows it.
using Action = void (*)(int slot, const char* argument);

void enable(int slot, const char* /*argument*/) {
  profilerThreads[slot].enabled = 1;
}

void setSampleTime(int slot, const char* argument) {
  int time = toInt(argument);
  if (time < 1) {
    say(std::string(argument) + " is invalid for sample-time, back to default sample-time\n");
    time = samplingTime;
  }
  profilerThreads[slot].sampleTime = time;
}

void setTotalTime(int /*slot*/, const char* argument) {
  profilingTime = toInt(argument);
  if (profilingTime == 0) {
    say("Enabling infinite time profiling\n");
    infiniteProfiling = true;
  } else if (profilingTime < 0) {
    say("profilingTime invalid value: " + std::to_string(profilingTime) + "\n");
    endProcess(-1);
  }
}

void setCommonSampleTime(int /*slot*/, const char* argument) {
  samplingTime = toInt(argument);
  say("Sampling Time = " + std::to_string(samplingTime) + " ms\n");
}

void setSuffix(int /*slot*/, const char* argument) {
  filename = argument;
  say("filename = " + filename + "\n");
}

/// Takes numbers as long as there are any; one character between them may be a comma.
void addPids(int /*slot*/, const char* argument) {
  pidListEnabled = true;
  std::istringstream list(argument);
  for (int pid = 0; list >> pid;) {
    pidList.push_back(pid);
    if (list.peek() == ',') list.ignore();
  }
}

void sayDdrDuration(int /*slot*/, const char* argument) {
  say("Obtained ddr-profile-duration = " + std::to_string(toInt(argument)) + "\n");
}

template <bool& flag>
void setFlag(int /*slot*/, const char* /*argument*/) {
  flag = true;
}

void reportVersion(int /*slot*/, const char* /*argument*/) {
  printVersionReport();
  endProcess(0);
}

struct Option {
  const char* name;
  int hasArgument;
  int value;            ///< what getopt_long returns for it
  const char* receipt;  ///< printed on receipt, before the action
  Action action;        ///< null: the usage text
  int slot;
};

// clang-format off
constexpr Option options[] = {
    {"cpu", no_argument, 'c', "--cpu option received. Setting the CPU Profiler flag.\n", enable, cpuSlot},
    {"cpu-sample-time", required_argument, 'A', "--cpu-sample-time option received.\n", setSampleTime, cpuSlot},
    {"gpu", no_argument, 'g', "--gpu option received. Setting the GPU Profiler flag.\n", enable, gpuSlot},
    {"gpu-sample-time", required_argument, 'B', "--gpu-sample-time option received.\n", setSampleTime, gpuSlot},
    {"adsp", no_argument, 'a', "--adsp option received. Setting the ADSP Profiler flag.\n", enable, adspSlot},
    {"adsp-sample-time", required_argument, 'C', "--adsp-sample-time option received.\n", setSampleTime, adspSlot},
    {"cdsp", no_argument, 'd', "--cdsp optiong received. Setting the CDSP Profiler flag.\n", enable, cdspSlot},
    {"cdsp-sample-time", required_argument, 'D', "--cdsp-sample-time optiong received.\n", setSampleTime, cdspSlot},
    {"total-time", required_argument, 't', "--total-time option received. Setting the profiling time now.\n", setTotalTime, noSlot},
    {"ddr", no_argument, 'r', "--ddr option is received. Setting the ddr flag\n", enable, ddrSlot},
    {"ddr-sample-time", required_argument, 'I', "--ddr-sample-time option received.\n", setSampleTime, ddrSlot},
    {"ddr-profile-duration", required_argument, 'e', "--ddr-profile-duration option received.\n", sayDdrDuration, noSlot},
    {"io", no_argument, 'i', "--io option received\n", enable, diskSlot},
    {"io-sample-time", required_argument, 'J', "--io-sample-time option received\n", setSampleTime, diskSlot},
    {"sample-time", required_argument, 's', "--sample-time option received\n", setCommonSampleTime, noSlot},
    {"file", required_argument, 'f', "--file option received\n", setSuffix, noSlot},
    {"json", no_argument, 'j', "--json option received\n", setFlag<jsonFile>, noSlot},
    {"csv", no_argument, 'E', "--csv option received\n", setFlag<csvFile>, noSlot},
    {"live", no_argument, 'l', "--live option received.\n", setFlag<liveProfiling>, noSlot},
    {"qtimer", no_argument, 'q', "--qtimer option received\n", setFlag<qtimerEnabled>, noSlot},
    {"proc", no_argument, 'p', "--proc option received\n", enable, procSlot},
    {"proc-sample-time", required_argument, 'F', "--proc-sample-time option received\n", setSampleTime, procSlot},
    {"mem", no_argument, 'o', "--mem option received\n", enable, memSlot},
    {"procmem", no_argument, 'u', "--procmem option received\n", enable, procmemSlot},
    {"procmem-sample-time", required_argument, 'U', "--procmem-sample-time option received\n", setSampleTime, procmemSlot},
    {"pid-list", required_argument, 'b', "--pid-list option has been selected\n", addPids, noSlot},
    {"mem-sample-time", required_argument, 'G', "--mem-sample-time option received\n", setSampleTime, memSlot},
    {"net", no_argument, 'n', "--net option received. Setting the NET Profiler flag.\n", enable, netSlot},
    {"net-sample-time", required_argument, 'N', "--net-sample-time option received\n", setSampleTime, netSlot},
    {"version", no_argument, 'v', nullptr, reportVersion, noSlot},
    {"help", no_argument, 'h', nullptr, nullptr, noSlot},
};
// clang-format on

/// The letters that are taken; not the same set as the table's values, which is on purpose.
constexpr char shortOptions[] = "cgaurdlqmopinjb:e:t:f:s:A:B:C:D:I:H:I:J:F:G:U:N:";

std::vector<option> longOptions() {
  std::vector<option> table;
  for (const auto& entry : options) {
    table.push_back({entry.name, entry.hasArgument, nullptr, entry.value});
  }
  table.push_back({});
  return table;
}

const Option* findOption(int value) {
  for (const auto& entry : options) {
    if (entry.value == value) return &entry;
  }
  return nullptr;
}

}  // namespace

bool parseOptions(int argc, char** argv) {
  const auto table = longOptions();
  bool fileGiven = false;
  opterr = 0;  // the usage text is the answer to what is unknown
  int value = 0;
  while ((value = getopt_long(argc, argv, shortOptions, table.data(), nullptr)) != -1) {
    const Option* entry = findOption(value);
    if (entry == nullptr || entry->action == nullptr) help(argv[0]);
    if (entry->receipt != nullptr) say(entry->receipt);
    entry->action(entry->slot, optarg);
    fileGiven |= value == 'f';
  }
  return fileGiven;
}

void update_default_sample_time() {
  for (auto& slot : profilerThreads) {
    if (slot.threadFunc != nullptr && slot.sampleTime == 0) slot.sampleTime = samplingTime;
  }
}

int dump_parameters() {
  std::string text = "The parameters and flags have the following values : \n";
  for (const auto& slot : profilerThreads) {
    if (slot.enabled == 0) continue;
    text += std::string("\t") + slot.name + " sampling time =  " + std::to_string(slot.sampleTime) +
            "\n";
    if (!infiniteProfiling && profilingTime < slot.sampleTime / 1000) {
      say(text + "Invalid input: profilingTime is smaller than samplingTime!\n");
      return -1;
    }
  }
  const auto flag = [](bool value) { return value ? "1, " : "0, "; };
  say(text + "\n\tJsonfile = " + flag(jsonFile) + "\n\tCSVfile = " + flag(csvFile) +
      "liveProfiling = " + flag(liveProfiling) +
      "profilingTime = " + std::to_string(profilingTime) + "s, ");
  return 0;
}

void help(const char* programName) {
  say(std::string("Usage :") + programName +
      " [options]  *note: all sampling time is 1s by default if not set explicitly\n"
      "--cpu [--cpu-sample-time <sample time>] -> cpu profiling with cpu sample time(ms)\n"
      "--gpu [--gpu-sample-time <sample time>] -> gpu profiling with gpu sample time(ms)\n"
      "--adsp [--adsp-sample-time <sample time>] -> adsp profiling with adsp sample time(ms)\n"
      "--cdsp [--cdsp-sample-time <sample time>] -> cdsp profiling with cdsp sample time(ms)\n"
      "--ddr [--ddr-sample-time <sample time>] -> ddr profiling with ddr sample time(ms)\n"
      "--proc [--proc-sample-time <sample time>] -> per process profiling with per process sample "
      "time(ms)\n"
      "--mem [--mem-sample-time <sample time>] -> memory profiling with memory sample time(ms)\n"
      "--io [--io-sample-time <sample time>] -> diskio profiling with io sample time(ms)\n"
      "--procmem -> enable per process memory profiling\n"
      "--pid-list -> profile particular pids for per process metrics\n"
      "--net [--net-sample-time <sample time>] -> net profiling with net sample time(ms)\n"
      "-t/--total-time <time in seconds>  -> total profiling time(s)\n"
      "-s/--sample-time <time in ms>\n"
      "-f/--file <file name> -> file name suffix\n"
      "-l/--live             -> for live profiling\n"
      "-j/--json             -> to create a JSON file\n"
      "-j/--csv             -> to create a CSV file\n"
      "-q/--qtimer           -> enable qtimer\n"
      "-v/--version             -> prints the version of lib and app\n"
      "-h/--help               -> prints this help menu\n");
  endProcess(0);
}
