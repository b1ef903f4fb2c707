#include <gmock/gmock.h>

#include "ddr.h"
#include "gpu_driver.h"
#include "gpu_fdinfo.h"
#include "period.h"
#include "process.h"

using namespace std::chrono_literals;

// What depends on the time that passes, which no scenario tells.

namespace {

TEST(Rates, ProcessUsageIsTheShareOfTheTimeUpToAllCores) {
  const SteadyTime start{5s};
  const auto usage = [&](std::uint64_t used, std::chrono::milliseconds passed, double cores) {
    return usageBetween({.used = 1'000'000, .at = start}, {.used = used, .at = start + passed},
                        cores);
  };
  EXPECT_DOUBLE_EQ(usage(26'000'000, 50ms, 4), 0.5);
  EXPECT_DOUBLE_EQ(usage(151'000'000, 50ms, 4), 3);
  EXPECT_DOUBLE_EQ(usage(151'000'000, 50ms, 2), 2);
  EXPECT_EQ(usage(999'999, 50ms, 4), 0);
  EXPECT_EQ(usage(2'000'000, 0ms, 4), 0);
}

TEST(Rates, MemoryBandwidthIsInMegabytesASecond) {
  const MemoryTraffic bytes{{{0x1p20, 0x1p21, 0}, {0x1p30, 0, 0x1p20}}};
  EXPECT_THAT(memoryBandwidths(bytes, 500ms), testing::ElementsAre(2, 4, 6, 2048, 0, 2050));
}

TEST(Rates, EngineTimeIsOverAllEnginesOfItsKind) {
  std::vector<DrmClient> before, now;
  const std::string client = "drm-client-id: 1\ndrm-engine-capacity-video: 2\ndrm-engine-video: ";
  addClient(before, client + "70 ns\n");
  addClient(now, client + "6000070 ns\ndrm-engine-render: 9000000 ns\n");
  EXPECT_DOUBLE_EQ(engineLoad(before, now, 10ms), 30);
}

TEST(Rates, AGpuIsKnownByItsNameAndNotWhatFeedsIt) {
  for (const auto* name :
       {"5000000.gpu", "gpufreq", "mali.0", "1.g3d", "pvrsrvkm", "2.sgx", "dfrgx"})
    EXPECT_TRUE(isGpuName(name)) << name;
  for (const auto* name : {"soc:gpubw", "1000.gpu-bus", "gpu-memlat", "gpu-llcc", "3.gpu_ddr",
                           "gpu-noc", "malidp-bus", "10.video", "soc:cdsp"})
    EXPECT_FALSE(isGpuName(name)) << name;
}

TEST(Rates, PeriodsKeepTheirGridAndSkipWhatWasMissed) {
  constexpr SteadyTime start{1h};
  SteadyTime now = start;
  replaceSteadyTime(&now);
  Period period;
  period.start(100);
  std::vector<std::int64_t> ends;
  for (const auto work : {20ms, 30ms, 250ms, 0ms, 100ms, 0ms}) {
    now += work;
    period.wait();
    ends.push_back((now - start) / 1ms);
  }
  for (const int milliseconds : {0, -5, 40}) {
    period.start(milliseconds);
    period.wait();
    ends.push_back((now - start) / 1ms);
  }
  replaceSteadyTime(nullptr);
  EXPECT_THAT(ends, testing::ElementsAre(120, 220, 470, 520, 620, 720, 720, 720, 760));
}

}  // namespace
