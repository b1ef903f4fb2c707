// What a sample of each of the recording's own gauges costs on a tree of kernel files for eight
// cores, in us of processor time: gauge_cost [SAMPLES]. The exit status is 1 where one is too dear.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <time.h>

#include "gauge.h"
#include "kernel_file.h"

namespace fs = std::filesystem;

namespace {

constexpr double mostMicroseconds = 200;

void write(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path) << text;
}

void makeTree(const fs::path& root) {
  const auto sys = root / "sys";
  write(sys / "devices/system/cpu/present", "0-7\n");
  for (int i = 0; i < 8; ++i) {
    const auto core = sys / ("devices/system/cpu/cpu" + std::to_string(i)) / "cpufreq";
    for (const auto* file : {"scaling_cur_freq", "scaling_min_freq", "scaling_max_freq"})
      write(core / file, "1804800\n");
  }
  for (int i = 0; i < 30; ++i) {
    const auto zone = sys / ("class/thermal/thermal_zone" + std::to_string(i));
    write(zone / "type", "cpu-" + std::to_string(i) + "\n");
    write(zone / "temp", "41500\n");
  }
  for (const auto* zone : {"intel-rapl:0", "intel-rapl:0:0", "intel-rapl:0:1"}) {
    write(sys / "class/powercap" / zone / "name", zone);
    write(sys / "class/powercap" / zone / "energy_uj", "262143328850\n");
    write(sys / "class/powercap" / zone / "max_energy_range_uj", "262143328850\n");
  }
  write(sys / "class/power_supply/battery/current_now", "-1250000\n");
  write(sys / "class/power_supply/battery/voltage_now", "3900000\n");
  for (const auto* resource : {"cpu", "io", "irq", "memory"}) {
    const std::string line = " avg10=1.00 avg60=2.00 avg300=3.00 total=123456789\n";
    write(root / "proc/pressure" / resource,
          std::string("some").append(line).append("full").append(line));
  }
}

double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return double(time.tv_sec) * 1e6 + double(time.tv_nsec) * 1e-3;
}

}  // namespace

int main(int argc, char** argv) try {
  const int samples = argc > 1 ? std::atoi(argv[1]) : 2000;
  std::string root = fs::temp_directory_path() / "gauge-cost.XXXXXX";
  if (mkdtemp(root.data()) == nullptr) return 2;
  makeTree(root);
  setKernelRoot(root);
  bool tooDear = false;
  for (const auto& kind : gaugeKinds) {
    const auto gauge = kind.make();
    std::vector<double> values(gauge->columns().size());
    const double before = processorTime();
    for (int i = 0; i < samples; ++i)
      gauge->sample(values);
    const double cost = (processorTime() - before) / samples;
    std::printf("%-10.*s%3zu values%8.1f us\n", int(kind.word.size()), kind.word.data(),
                values.size(), cost);
    tooDear = tooDear || cost > mostMicroseconds;
  }
  fs::remove_all(root);
  return tooDear ? 1 : 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "gauge_cost: %s\n", error.what());
  return 2;
}
