#include "ddr.h"

#include <cerrno>
#include <gmock/gmock.h>
#include <unistd.h>

#include "ddr_mon.h"
#include "kernel_tree.h"
#include "pmu.h"

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

const std::string units = "/sys/bus/event_source/devices/";

void describe(const KernelTree& tree, const std::string& unit, const std::string& event,
              const std::string& terms, const std::string& scale, const std::string& bytes) {
  const std::string path = units + unit + "/events/" + event;
  tree.write(path, terms + "\n");
  if (!scale.empty()) tree.write(path + ".scale", scale + "\n");
  if (!bytes.empty()) tree.write(path + ".unit", bytes + "\n");
}

TEST(Pmu, TakesTheEventsThatItCanSelectAndThatCountBytes) {
  const KernelTree tree{{units + "imc/type", "13\n"},
                        {units + "imc/cpumask", "0,8-9\n"},
                        {units + "imc/format/event", "config:0-7\n"},
                        {units + "imc/format/umask", "config:8-15\n"},
                        {units + "imc/format/inv", "config:23\n"},
                        {units + "imc/format/split", "config1:0-7,32\n"}};
  struct {
    const char *event, *terms, *scale, *unit;
    std::array<std::uint64_t, 3> config;
    double bytes;  ///< 0: not taken
  } const cases[] = {
      {"a_read", "event=0x04,umask=0x03", "6.103515625e-5", "MiB", {0x304, 0, 0}, 64},
      {"b_flag", "event=5,inv", "", "B", {0x800005, 0, 0}, 1},
      {"c_split", "split=0x1ff", "2", "KB", {0, 0x1000000ff, 0}, 2048},
      {"d_raw", "config=0x12,config2=7", "1", "bytes", {0x12, 0, 7}, 1},
      {"e_no_unit", "event=1", "1", "", {}, 0},
      {"f_not_bytes", "event=1", "1", "Joules", {}, 0},
      {"g_parameter", "event=?", "1", "MB", {}, 0},
      {"h_too_wide", "event=0x100", "1", "MB", {}, 0},
      {"i_unknown", "event=1,mode=2", "1", "MB", {}, 0},
  };
  for (const auto& c : cases)
    describe(tree, "imc", c.event, c.terms, c.scale, c.unit);
  const auto events = byteEvents("imc");
  std::size_t i = 0;
  for (const auto& c : cases) {
    if (c.bytes == 0) continue;
    ASSERT_LT(i, events.size()) << c.event;
    EXPECT_EQ(events[i].name, c.event);
    EXPECT_EQ(events[i].type, 13);
    EXPECT_THAT(events[i].config, testing::ElementsAreArray(c.config)) << c.event;
    EXPECT_EQ(events[i].bytes, c.bytes) << c.event;
    EXPECT_THAT(events[i++].cpus, ElementsAre(0, 8, 9));
  }
  EXPECT_EQ(events.size(), i);
}

TEST(Pmu, ExtendsACountOverTheTimeInWhichTheCounterDidNotRun) {
  EXPECT_EQ(counted({100, 1000, 1000}, {150, 2000, 2000}), 50);
  EXPECT_EQ(counted({100, 1000, 500}, {150, 2000, 750}), 200);
  EXPECT_EQ(counted({100, 1000, 500}, {100, 2000, 500}), 0);
  EXPECT_EQ(counted({100, 1000, 500}, {1, 2000, 1500}), 0);
}

TEST(Ddr, GivesMegabytesASecond) {
  const MemoryTraffic bytes{{{0x1p20, 0x1p21}, {0x1p30, 0}}};
  EXPECT_THAT(memoryBandwidths(bytes, 500ms), ElementsAre(2, 4, 6, 2048, 0, 2048));
}

std::vector<std::string> opened;

/// Three readings: of the constructor, of the sampling time, and of the sample.
Descriptor openPipe(const PmuEvent& event, int cpu) {
  opened.push_back(event.unit + "/" + event.name + "@" + std::to_string(cpu));
  if (cpu == 9) {
    errno = EACCES;
    return {};
  }
  int ends[2];
  if (pipe(ends) != 0) return {};
  const std::uint64_t count = event.name == "data_reads" ? 1'000'000'000'000 : 3'000'000'000'000;
  const CounterReading readings[] = {{5, 10, 10}, {5, 20, 20}, {5 + count, 40, 30}};
  EXPECT_EQ(write(ends[1], readings, sizeof readings), sizeof readings);
  close(ends[1]);
  return Descriptor(ends[0]);
}

TEST(Ddr, CountsEveryInstanceOfOneKindOfUnit) {
  const KernelTree tree;
  for (const std::string unit : {"uncore_imc_0", "uncore_imc_1", "uncore_imc_free_running"}) {
    tree.write(units + unit + "/type", "14\n");
    tree.write(units + unit + "/cpumask", "0,9\n");
    tree.write(units + unit + "/format/event", "config:0-7\n");
    describe(tree, unit, "data_reads", "event=1", "64", "B");
    describe(tree, unit, "data_writes", "event=2", "64", "B");
    describe(tree, unit, "data_total", "event=3", "64", "B");
  }
  opened.clear();
  setCounterOpener(openPipe);
  testing::internal::CaptureStderr();
  ddr::DDR_MON monitor;
  setCounterOpener(nullptr);
  EXPECT_THAT(
      testing::internal::GetCapturedStderr(),
      testing::HasSubstr("no memory traffic of uncore_imc_1/data_writes: Permission denied"));
  EXPECT_THAT(opened, ElementsAre("uncore_imc_0/data_reads@0", "uncore_imc_0/data_reads@9",
                                  "uncore_imc_0/data_writes@0", "uncore_imc_0/data_writes@9",
                                  "uncore_imc_1/data_reads@0", "uncore_imc_1/data_reads@9",
                                  "uncore_imc_1/data_writes@0", "uncore_imc_1/data_writes@9"));
  monitor.corvane_setSamplingTime(100);
  const std::int64_t* figures = monitor.corvane_getDDRStats();
  EXPECT_GT(figures[3], 0);
  EXPECT_NEAR(double(figures[4]) / double(figures[3]), 3, 1e-6);
  EXPECT_EQ(figures[5], figures[3] + figures[4]);
  EXPECT_EQ(figures[0] + figures[1] + figures[2], 0);
}

}  // namespace
