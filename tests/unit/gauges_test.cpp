#include <cmath>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "gauge_file.h"
#include "kernel_tree.h"
#include "scratch_folder.h"
#include "steady_time.h"

using namespace std::chrono_literals;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::NanSensitiveDoubleEq;

namespace {

const double gone = std::nan("");

/// A time that passes as the test says.
class GaugeTest : public testing::Test {
 protected:
  GaugeTest() { replaceSteadyTime(&time_); }
  ~GaugeTest() override { replaceSteadyTime(nullptr); }

  /// The sample after so much time.
  std::vector<double> after(std::chrono::milliseconds passed, Gauge& gauge) {
    time_ += passed;
    std::vector<double> values(gauge.columns().size());
    gauge.sample(values);
    for (auto& value : values)
      value = std::round(value * 1e6) / 1e6;
    return values;
  }

  KernelTree tree_;
  SteadyTime time_{100s};
};

auto values(auto... expected) {
  return ElementsAre(NanSensitiveDoubleEq(expected)...);
}

TEST_F(GaugeTest, NothingHereMeansNoColumns) {
  for (const auto& kind : gaugeKinds)
    EXPECT_THAT(kind.make()->columns(), IsEmpty()) << kind.word;
}

TEST_F(GaugeTest, TemperaturesOfZonesThatGoAndAreNamedAlike) {
  const std::string zones = "/sys/class/thermal/thermal_zone";
  const char* const names[] = {"acpitz", "acpitz", "a \"b\",\n"};
  for (int i = 0; i < 3; ++i) {
    tree_.write(zones + std::to_string(i) + "/type", names[i]);
    tree_.write(zones + std::to_string(i) + "/temp", "4150" + std::to_string(i) + "\n");
  }
  tree_.write(zones + "3/type", "without");
  tree_.write("/sys/class/thermal/cooling_device0/type", "fan");
  const auto gauge = temperatureGauge();
  EXPECT_THAT(gauge->columns(), ElementsAre("acpitz(C)", "acpitz.1(C)", "a__b__(C)"));
  EXPECT_THAT(after(1s, *gauge), values(41.5, 41.501, 41.502));
  tree_.write(zones + "0/temp", "-3000\n");
  tree_.write(zones + "1/temp", "");
  EXPECT_THAT(after(1s, *gauge), values(-3.0, gone, 41.502));
}

TEST_F(GaugeTest, ClocksOfEightCoresOfWhichTwoComeAndGo) {
  const std::string cores = "/sys/devices/system/cpu/";
  const auto set = [&](int core, const char* khz) {
    const auto folder = cores + "cpu" + std::to_string(core) + "/cpufreq/";
    tree_.write(folder + "scaling_cur_freq", khz);
    tree_.write(folder + "scaling_min_freq", "300000\n");
    tree_.write(folder + "scaling_max_freq", core < 4 ? "1804800\n" : "2841600\n");
  };
  tree_.write(cores + "present", "0-7\n");
  for (int core = 0; core < 7; ++core)
    set(core, "1200000\n");
  const auto gauge = frequencyGauge();
  ASSERT_EQ(gauge->columns().size(), 24U);
  EXPECT_EQ(gauge->columns()[22], "cpu7min(MHz)");
  auto clocks = after(1s, *gauge);
  EXPECT_THAT(std::vector(clocks.begin() + 18, clocks.end()),
              values(1200.0, 300.0, 2841.6, gone, gone, gone));
  set(7, "2841600\n");
  tree_.write(cores + "cpu6/cpufreq/scaling_cur_freq", "");
  clocks = after(1s, *gauge);
  EXPECT_THAT(std::vector(clocks.begin() + 18, clocks.end()),
              values(gone, 300.0, 2841.6, 2841.6, 300.0, 2841.6));
}

TEST_F(GaugeTest, PowerOfCountersThatWrapAndStepBack) {
  const std::string zones = "/sys/class/powercap/intel-rapl";
  const auto energy = [&](const std::string& zone, const char* microjoules) {
    tree_.write(zones + zone + "/energy_uj", microjoules);
  };
  for (const std::string zone : {":0", ":0:0", ":1"}) {
    tree_.write(zones + zone + "/name", zone == ":0:0" ? "dram\n" : "package-" + zone.substr(1));
    tree_.write(zones + zone + "/max_energy_range_uj", "262143328850\n");
    energy(zone, "262143000000\n");
  }
  tree_.write("/sys/class/powercap/intel-rapl/enabled", "1");
  tree_.write("/sys/class/power_supply/BAT0/current_now", "-1250000\n");
  tree_.write("/sys/class/power_supply/BAT0/voltage_now", "3900000\n");
  tree_.write("/sys/class/power_supply/AC/online", "1\n");
  tree_.write("/sys/class/hwmon/hwmon3/name", "amdgpu\n");
  tree_.write("/sys/class/hwmon/hwmon3/power1_input", "35000000\n");
  tree_.write("/sys/class/hwmon/hwmon3/power1_average", "34000000\n");
  tree_.write("/sys/class/hwmon/hwmon3/power1_cap", "99000000\n");
  tree_.write("/sys/class/hwmon/hwmon3/power2_average", "5500000\n");
  tree_.write("/sys/class/hwmon/hwmon3/power2_label", "PPT fast\n");
  const auto gauge = powerGauge();
  EXPECT_THAT(
      gauge->columns(),
      ElementsAre("BAT0_current(A)", "BAT0_voltage(V)", "amdgpu_power1(W)", "amdgpu_PPT_fast(W)",
                  "package-0_mean(W)", "package-0/dram_mean(W)", "package-1_mean(W)"));
  energy(":0", "1171150\n");       // beyond its range: 1.5 J on
  energy(":0:0", "262143900000");  // 0.9 J on
  energy(":1", "131000000000\n");  // reset in the middle
  EXPECT_THAT(after(500ms, *gauge), values(-1.25, 3.9, 35.0, 5.5, 3.0, 1.8, gone));
  energy(":1", "131002000000\n");
  tree_.write("/sys/class/power_supply/BAT0/current_now", "250000\n");
  EXPECT_THAT(after(2s, *gauge), values(0.25, 3.9, 35.0, 5.5, 0.0, 0.0, 1.0));
}

TEST_F(GaugeTest, PressureIsTheShareOfItsPeriod) {
  const auto write = [&](const char* resource, const char* some, const char* full) {
    std::string text = std::string("some avg10=9.00 avg60=1.00 avg300=0.10 total=") + some + "\n";
    if (full != nullptr)
      text += std::string("full avg10=0.00 avg60=0 avg300=0 total=") + full + "\n";
    tree_.write(std::string("/proc/pressure/") + resource, text);
  };
  write("cpu", "1000000", nullptr);
  write("io", "5000", "4000");
  const auto gauge = pressureGauge();
  EXPECT_THAT(gauge->columns(), ElementsAre("cpu_some(%)", "io_some(%)", "io_full(%)"));
  write("cpu", "1250000", nullptr);
  write("io", "3005000", "3000");  // more than the time that passed; a step back
  EXPECT_THAT(after(1s, *gauge), values(25.0, 100.0, gone));
  EXPECT_THAT(after(0s, *gauge), values(gone, gone, gone));
}

TEST_F(GaugeTest, FileHasTheCommonForm) {
  const ScratchFolder folder;
  const int fd = ::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
  tree_.write("/sys/class/thermal/thermal_zone0/type", "a-name-of-19-letters");
  tree_.write("/sys/class/thermal/thermal_zone0/temp", "41500");
  {
    GaugeFile file(temperatureGauge(), fd, "t.txt", 100ms, time_);
    EXPECT_EQ(file.due(), time_ + 100ms);
    time_ += 350ms;
    file.sample();
    EXPECT_EQ(file.due(), time_ + 50ms);  // the samples that were missed are skipped
    tree_.write("/sys/class/thermal/thermal_zone0/temp", "");
    time_ += 50ms;
    file.sample();
  }
  ::close(fd);
  std::istringstream lines(folder.read("t.txt"));
  std::string header, first, second, rest;
  std::getline(lines, header);
  std::getline(lines, first);
  std::getline(lines, second);
  EXPECT_EQ(header, "          Time(usec) a-name-o..9-letters(C)");
  EXPECT_THAT(first, testing::EndsWith("                 41.500"));
  EXPECT_THAT(second, testing::EndsWith("                    nan"));
  EXPECT_EQ(first.size(), header.size());
  EXPECT_FALSE(std::getline(lines, rest));
}

}  // namespace
