#include "gpu_card.h"

#include <algorithm>
#include <array>
#include <vector>

#include "kernel_file.h"
#include "text_scan.h"

namespace {

constexpr const char* drmFolder = "/sys/class/drm/";

/// "card0", not the outputs of one ("card0-DP-1").
bool isCard(const std::string& name) {
  return name.starts_with("card") && toNumber<int>(std::string_view(name).substr(4));
}

struct Clock {
  std::string path;
  double megahertzPerUnit;
};

/// Where drivers state their clock, as it is now and not as it was asked for.
std::vector<Clock> clocksOf(const std::string& card) {
  std::vector<Clock> clocks{{card + "/gt_act_freq_mhz", 1},
                            {card + "/gt/gt0/rps_act_freq_mhz", 1},
                            {card + "/device/tile0/gt0/freq0/act_freq", 1}};
  const std::string sensors = card + "/device/hwmon/";
  for (const auto& sensor : listFolder(sensors)) {
    clocks.push_back({sensors + sensor + "/freq1_input", 1e-6});
  }
  return clocks;
}

}  // namespace

GpuCard::GpuCard(const std::string& folder)
    : busy_(folder + "/device/gpu_busy_percent"), memoryBusy_(folder + "/device/mem_busy_percent") {
  for (const auto& [path, scale] : clocksOf(folder)) {
    clock_ = Attribute(path);
    megahertzPerUnit_ = scale;
    if (clock_.exists()) break;
  }
}

GpuCard GpuCard::find() {
  GpuCard best;
  for (const auto& name : listFolder(drmFolder)) {
    if (!isCard(name)) continue;
    GpuCard card(drmFolder + name);
    if (card.hasLoad()) return card;
    if (card.hasClock() && !best.hasClock()) best = std::move(card);
  }
  return best;
}

std::optional<double> GpuCard::megahertz() {
  const auto value = clock_.number();
  return value ? std::optional(double(*value) * megahertzPerUnit_) : std::nullopt;
}

bool hasDrmDevice() {
  const auto names = listFolder(drmFolder);
  return std::ranges::any_of(
      names, [](const auto& name) { return isCard(name) || name.starts_with("renderD"); });
}
