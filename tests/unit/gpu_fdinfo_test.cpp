#include "gpu_fdinfo.h"

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

std::vector<DrmClient> clientsOf(const std::vector<std::string>& fdinfos) {
  std::vector<DrmClient> clients;
  for (const auto& fdinfo : fdinfos) {
    addClient(clients, "pos:\t0\ndrm-driver:\td\n" + fdinfo);
  }
  return clients;
}

struct LoadCase {
  const char* scenario;
  std::vector<std::string> before, now;
  double load;
};

class EngineLoad : public testing::TestWithParam<LoadCase> {};

TEST_P(EngineLoad, IsThatOfTheBusiestEngineOverTenMilliseconds) {
  const auto& [scenario, before, now, load] = GetParam();
  EXPECT_NEAR(engineLoad(clientsOf(before), clientsOf(now), 10ms), load, 1e-9) << scenario;
}

INSTANTIATE_TEST_SUITE_P(
    Readings, EngineLoad,
    testing::Values(
        LoadCase{"clients add up on each engine",
                 {"drm-client-id: 1\ndrm-engine-render: 5 ns\ndrm-engine-video: 0 ns\n",
                  "drm-client-id: 2\ndrm-engine-render: 70 ns\n"},
                 {"drm-client-id: 1\ndrm-engine-render: 1000005 ns\ndrm-engine-video: 2500000 ns\n",
                  "drm-client-id: 2\ndrm-engine-render: 2000070 ns\n"},
                 30},
        LoadCase{
            "two engines of a kind; the same client on two devices is two",
            {"drm-pdev: a\ndrm-client-id: 1\ndrm-engine-capacity-v: 2\ndrm-engine-v: 0 ns\n",
             "drm-pdev: b\ndrm-client-id: 1\ndrm-engine-v: 0 ns\n"},
            {"drm-pdev: a\ndrm-client-id: 1\ndrm-engine-capacity-v: 2\ndrm-engine-v: 9000000 ns\n",
             "drm-pdev: b\ndrm-client-id: 1\ndrm-engine-v: 4000000 ns\n"},
            45},
        LoadCase{"one that is new counts from the next reading, one that stepped back as nothing",
                 {"drm-client-id: 1\ndrm-engine-x: 100 ns\n"},
                 {"drm-client-id: 1\ndrm-engine-x: 1 ns\n",
                  "drm-client-id: 2\ndrm-engine-x: 9000000 ns\n"},
                 0},
        LoadCase{"no more than all of the time; what is not a client's counts as nothing",
                 {"drm-client-id: 1\ndrm-engine-x: 0 ns\n", "drm-engine-y: 0 ns\n"},
                 {"drm-client-id: 1\ndrm-engine-x: 99000000 ns\n", "drm-engine-y: 5 ns\n"},
                 100}),
    [](const auto& test) { return "case" + std::to_string(test.index); });

TEST(Fdinfo, StatesTheClockInAnyUnit) {
  for (const auto& [clock, megahertz] : {std::pair{"450000000 Hz", 450},
                                         {"450 MHz", 450},
                                         {"450000 KHz", 450},
                                         {"450000000", 450}}) {
    EXPECT_EQ(
        clientsOf({"drm-client-id: 1\ndrm-curfreq-gpu: " + std::string(clock) + "\n"})[0].megahertz,
        megahertz);
  }
}

}  // namespace
