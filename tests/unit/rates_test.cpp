#include <gmock/gmock.h>

#include "ddr.h"
#include "gpu_fdinfo.h"
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
  const MemoryTraffic bytes{{{0x1p20, 0x1p21}, {0x1p30, 0}}};
  EXPECT_THAT(memoryBandwidths(bytes, 500ms), testing::ElementsAre(2, 4, 6, 2048, 0, 2048));
}

TEST(Rates, EngineTimeIsOverAllEnginesOfItsKind) {
  std::vector<DrmClient> before, now;
  const std::string client = "drm-client-id: 1\ndrm-engine-capacity-video: 2\ndrm-engine-video: ";
  addClient(before, client + "70 ns\n");
  addClient(now, client + "6000070 ns\ndrm-engine-render: 9000000 ns\n");
  EXPECT_DOUBLE_EQ(engineLoad(before, now, 10ms), 30);
}

}  // namespace
