#include <gmock/gmock.h>
#include <vector>

#include "cpu_mon.h"
#include "kernel_tree.h"

using testing::ElementsAre;

namespace {

struct CpuCase {
  const char* scenario;
  const char* possible;
  const char* before;
  const char* now;
  std::vector<double> usage, steal;
};

class CpuMonitor : public testing::TestWithParam<CpuCase> {};

TEST_P(CpuMonitor, GivesTheSharesOfThePeriod) {
  const auto& param = GetParam();
  const KernelTree tree{{"/sys/devices/system/cpu/possible", param.possible},
                        {"/proc/stat", param.before}};
  cpu::CPU_MON monitor;
  tree.write("/proc/stat", param.now);
  monitor.corvane_setSamplingTime(0);
  const double* usage = monitor.corvane_getPerCoreUsage();
  const double* steal = monitor.corvane_getPerCoreStealTime();
  const auto count = std::size_t(monitor.coreCount) + 1;
  EXPECT_EQ(std::vector(usage, usage + count), param.usage);
  EXPECT_EQ(std::vector(steal, steal + count), param.steal);
}

INSTANTIATE_TEST_SUITE_P(
    Machines, CpuMonitor,
    testing::Values(
        CpuCase{"two cores, every kind of tick, guest times not counted twice",
                "0-1\n",
                "cpu  100 10 50 1000 20 5 5 10 3 0\ncpu0 60 10 20 400 20 5 5 0 3 0\n"
                "cpu1 40 0 30 600 0 0 0 10 0 0\nintr 5\n",
                "cpu  110 20 60 1040 30 10 10 20 9 0\ncpu0 70 20 30 410 30 10 10 0 9 0\n"
                "cpu1 40 0 30 630 0 0 0 20 0 0\nintr 5\n",
                {40, 200.0 / 3, 0},
                {10, 0, 25}},
        CpuCase{"eight cores, 2 and 5 offline, 7 goes offline, 3 comes back",
                "0-7\n",
                "cpu 80 0 0 80\ncpu0 10 0 0 10\ncpu1 10 0 0 10\ncpu4 10 0 0 10\n"
                "cpu6 10 0 0 10\ncpu7 10 0 0 10\n",
                "cpu 100 0 0 140\ncpu0 15 0 0 15\ncpu1 10 0 0 20\ncpu3 90 0 0 10\n"
                "cpu4 20 0 0 10\ncpu6 11 0 0 19\n",
                {25, 50, 0, 0, 0, 100, 0, 10, 0},
                std::vector<double>(9)},
        CpuCase{"a counter that steps back counts as nothing",
                "0\n",
                "cpu 50 0 50 500 900 0 0 0\ncpu0 50 0 50 500 900 0 0 0\n",
                "cpu 60 0 50 490 910 0 0 0\ncpu0 10 0 20 530 910 0 0 0\n",
                {50, 0},
                {0, 0}},
        CpuCase{"a kernel without the steal column; no tick has passed for core 1",
                "0-1",
                "cpu 10 0 0 10 0 0 0\ncpu0 5 0 0 5 0 0 0\ncpu1 5 0 0 5 0 0 0\n",
                "cpu 13 0 0 11 0 0 0\ncpu0 8 0 0 6 0 0 0\ncpu1 5 0 0 5 0 0 0\n",
                {75, 75, 0},
                {0, 0, 0}},
        CpuCase{"nothing there at all", "", "", "", {0}, {0}}),
    [](const auto& info) { return "machine" + std::to_string(info.index); });

TEST(CpuMonitor, KeepsTheLastValuesWhereNoTickHasPassed) {
  const KernelTree tree{{"/sys/devices/system/cpu/possible", "0"}, {"/proc/stat", "cpu 1 0 0 1\n"}};
  cpu::CPU_MON monitor;
  tree.write("/proc/stat", "cpu 2 0 0 2\n");
  monitor.corvane_getPerCoreUsage();
  EXPECT_EQ(monitor.corvane_getPerCoreUsage()[0], 50);
}

}  // namespace
