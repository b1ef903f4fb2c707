#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <sstream>

#include "ddr_mon.h"
#include "disk_mon.h"
#include "dsp_mon.h"
#include "gpu_mon.h"
#include "memory_mon.h"
#include "net_mon.h"
#include "scenario.h"

namespace {

std::string sixFigures(const auto* figures) {
  std::ostringstream text;
  for (int i = 0; i < 6; ++i)
    text << figures[i] << (i < 5 ? ' ' : '\n');
  return text.str();
}

std::string memorySample(memory::MEMORY_MON& monitor) {
  return sixFigures(monitor.corvane_getMemStats());
}

std::string ddrSample(ddr::DDR_MON& monitor) {
  return sixFigures(monitor.corvane_getDDRStats());
}

std::string diskSample(diskio::DISK_MON& monitor) {
  std::ostringstream text;
  const auto* disks = monitor.corvane_getIOStats();
  EXPECT_EQ(monitor.corvane_getNumOfIOStats(), int(disks->size()));
  EXPECT_EQ(lastSlotWaitedFor(), 8);
  for (const auto& disk : *disks) {
    text << disk.name << ' ' << disk.sectorsRead << ' ' << disk.sectorsWritten << '\n';
  }
  return text.str();
}

std::string netSample(net::NET_MON& monitor) {
  std::ostringstream text;
  for (const auto& [name, collisions, txBytes, rxBytes, txPackets, rxPackets, txDropped,
                    rxDropped] : monitor.corvane_getNetstats()) {
    text << name << ' ' << collisions << ' ' << txBytes << ' ' << rxBytes << ' ' << txPackets << ' '
         << rxPackets << ' ' << txDropped << ' ' << rxDropped << '\n';
  }
  return text.str();
}

std::string dspSample(dsp::DSP_MON& monitor) {
  std::ostringstream text;
  if (monitor.corvane_getDSPSample() != 0) return "none\n";
  text << monitor.corvane_getDSPFrequency() << ' ' << monitor.corvane_getDSPUtilization() << '\n';
  return text.str();
}

std::string gpuSample(gpu::GPU_MON& monitor) {
  std::ostringstream text;
  EXPECT_EQ(monitor.corvane_getGPUHeaders().size(), 5);
  text << monitor.corvane_getGPUSample() << ": " << monitor.corvane_getGPUFrequency() << ' '
       << monitor.corvane_getGPUUtilization() << ' ' << monitor.corvane_gpuBusBusy() << ' '
       << monitor.corvane_getReadBandwidth() << ' ' << monitor.corvane_getWriteBandwidth() << '\n';
  return text.str();
}

template <class Monitor, class... Arguments>
Scenario::Sampler sampler(std::string (*sample)(Monitor&), Arguments... arguments) {
  auto monitor = std::make_shared<Monitor>(arguments...);
  if constexpr (requires { monitor->corvane_setSamplingTime(0); }) {
    monitor->corvane_setSamplingTime(0);
  }
  return [=] { return sample(*monitor); };
}

/// By the first word of the scenario's file name.
const std::map<std::string, Scenario::Sampler (*)()> samplers = {
    {"memory", [] { return sampler(memorySample); }},
    {"disk", [] { return sampler(diskSample, scenarioWait); }},
    {"adsp", [] { return sampler(dspSample, 2, scenarioWait); }},
    {"cdsp", [] { return sampler(dspSample, 3, scenarioWait); }},
    {"gpu", [] { return sampler(gpuSample); }},
    {"ddr", [] { return sampler(ddrSample); }},
    {"net", [] { return sampler(netSample); }},
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
