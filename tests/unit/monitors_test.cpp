#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <sstream>
#include <unistd.h>

#include "cpu_mon.h"
#include "ddr_mon.h"
#include "disk_mon.h"
#include "dsp_mon.h"
#include "gpu_mon.h"
#include "memory_mon.h"
#include "net_mon.h"
#include "perprocmem_mon.h"
#include "process_mon.h"
#include "scenario.h"

namespace {

using Pids = Scenario::Pids;

std::string line(const auto&... values) {
  std::ostringstream text;
  ((text << values << ' '), ...);
  auto words = text.str();
  words.back() = '\n';
  return words;
}

std::string cpuSample(cpu::CPU_MON& monitor, const Pids&) {
  const double* usage = monitor.corvane_getPerCoreUsage();
  const double* steal = monitor.corvane_getPerCoreStealTime();
  auto text = line("all", usage[0], steal[0]);
  for (int i = 1; i <= monitor.coreCount; ++i)
    text += line("cpu" + std::to_string(i - 1), usage[i], steal[i]);
  return text;
}

std::string memorySample(memory::MEMORY_MON& monitor, const Pids&) {
  const auto* kb = monitor.corvane_getMemStats();
  return line(kb[0], kb[1], kb[2], kb[3], kb[4], kb[5]);
}

/// As multiples of the first figure: a story tells amounts, but not how fast it is played.
std::string ddrSample(ddr::DDR_MON& monitor, const Pids&) {
  const auto* rates = monitor.corvane_getDDRStats();
  const auto first = double(std::max<std::int64_t>(rates[0], 1));
  const auto times = [&](int i) { return double(rates[i]) / first; };
  return line(times(0), times(1), times(2), times(3), times(4), times(5));
}

std::string diskSample(diskio::DISK_MON& monitor, const Pids&) {
  std::string text;
  const auto* disks = monitor.corvane_getIOStats();
  EXPECT_EQ(monitor.corvane_getNumOfIOStats(), int(disks->size()));
  EXPECT_EQ(slotWaitedFor(), 8);
  for (const auto& disk : *disks)
    text += line(disk.name, disk.sectorsRead, disk.sectorsWritten);
  return text;
}

std::string netSample(net::NET_MON& monitor, const Pids&) {
  std::string text;
  for (const auto& [name, collisions, txBytes, rxBytes, txPackets, rxPackets, txDropped,
                    rxDropped] : monitor.corvane_getNetstats()) {
    text += line(name, collisions, txBytes, rxBytes, txPackets, rxPackets, txDropped, rxDropped);
  }
  return text;
}

/// Led by the slot whose period was waited for.
std::string dspSample(dsp::DSP_MON& monitor, const Pids&) {
  const bool sampled = monitor.corvane_getDSPSample() == 0;
  const auto slot = std::to_string(slotWaitedFor()) + ":";
  if (!sampled) return line(slot, "none");
  return line(slot, monitor.corvane_getDSPFrequency(), monitor.corvane_getDSPUtilization());
}

std::string gpuSample(gpu::GPU_MON& monitor, const Pids&) {
  EXPECT_THAT(monitor.corvane_getGPUHeaders(),
              testing::ElementsAre("GPU Frequency(MHz)", "GPU Utilization(%)", "GPU Bus Busy(%)",
                                   "GPU Read BW(MB/s)", "GPU Write BW(MB/s)"));
  const auto result = std::to_string(monitor.corvane_getGPUSample()) + ":";
  return line(result, monitor.corvane_getGPUFrequency(), monitor.corvane_getGPUUtilization(),
              monitor.corvane_gpuBusBusy(), monitor.corvane_getReadBandwidth(),
              monitor.corvane_getWriteBandwidth());
}

std::string processSample(process::PROCESS_MON& monitor, const Pids& pids) {
  std::string text;
  for (const auto& p :
       pids.empty() ? monitor.corvane_getProcessStats() : monitor.corvane_getProcessStats(pids)) {
    text += line(p.pid, p.name, p.userTime, p.systemTime, p.totalTime, p.usage);
  }
  EXPECT_EQ(slotWaitedFor(), 7);
  return text;
}

/// What the kernel counts in pages is given in pages, whose size is the machine's.
std::string procmemSample(procmem::PERPROCMEM_MON& monitor, const Pids& pids) {
  std::string text;
  for (const auto& p : pids.empty() ? monitor.corvane_getPerProcessMemStats()
                                    : monitor.corvane_getPerProcessMemStats(pids)) {
    const auto unit = p.pss == 0 ? std::uint64_t(::sysconf(_SC_PAGESIZE)) / 1024 : 1;
    text += line(p.pid, p.parentPid, p.name, p.vss / unit, p.pss, p.rss / unit, p.uss);
  }
  return text;
}

template <class Monitor, class... Arguments>
Scenario::Sampler sampler(std::string (*sample)(Monitor&, const Pids&), Arguments... arguments) {
  auto monitor = std::make_shared<Monitor>(arguments...);
  if constexpr (requires { monitor->corvane_setSamplingTime(0); }) {
    monitor->corvane_setSamplingTime(0);
  }
  return [=](const Pids& pids) { return sample(*monitor, pids); };
}

Scenario::Sampler processSampler(const Pids& pids) {
  return pids.empty() ? sampler(processSample, scenarioWait)
                      : sampler(processSample, scenarioWait, pids);
}

/// By the first word of the scenario's file name.
const std::map<std::string, Scenario::Sampler (*)(const Pids&)> samplers = {
    {"cpu", [](const Pids&) { return sampler(cpuSample); }},
    {"memory", [](const Pids&) { return sampler(memorySample); }},
    {"disk", [](const Pids&) { return sampler(diskSample, scenarioWait); }},
    {"adsp", [](const Pids&) { return sampler(dspSample, 2, scenarioWait); }},
    {"cdsp", [](const Pids&) { return sampler(dspSample, 3, scenarioWait); }},
    {"gpu", [](const Pids&) { return sampler(gpuSample); }},
    {"ddr", [](const Pids&) { return sampler(ddrSample); }},
    {"net", [](const Pids&) { return sampler(netSample); }},
    {"process", processSampler},
    {"procmem", [](const Pids&) { return sampler(procmemSample); }},
};

class Monitors : public testing::TestWithParam<std::string> {};

TEST_P(Monitors, PublishWhatTheKernelSays) {
  const auto& name = GetParam();
  Scenario(FIXTURES "/monitors/" + name + ".txt").play(samplers.at(name.substr(0, name.find('_'))));
}

std::vector<std::string> scenarioNames() {
  std::vector<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator(FIXTURES "/monitors")) {
    names.push_back(file.path().stem());
  }
  return names;
}

INSTANTIATE_TEST_SUITE_P(Scenarios, Monitors, testing::ValuesIn(scenarioNames()),
                         [](const auto& test) { return test.param; });

}  // namespace
