#include "devfreq.h"
#include "gpu_card.h"
#include "gpu_clients.h"
#include "gpu_mon.h"
#include "notice.h"
#include "opaque.h"

namespace gpu {

namespace {

/// The entry whose device is a graphics device.
Devfreq findClock() {
  return Devfreq::find(
      "gpu", [](const std::string& folder) { return !listFolder(folder + "/device/drm").empty(); });
}

struct Sample {
  double megahertz = 0, load = 0, busLoad = 0;
};

struct State {
  GpuCard card = GpuCard::find();
  Devfreq devfreq = findClock();
  GpuClients clients;
  bool hasDrm = hasDrmDevice();
  Sample sample;

  bool isThere() const { return hasDrm || devfreq.exists(); }

  /// Reading the clients costs most, so it is done only where nothing else knows the load.
  bool needsClients() const { return hasDrm && !card.hasLoad() && !devfreq.hasLoad(); }

  std::optional<double> load() {
    if (card.hasLoad()) return card.load();
    if (devfreq.hasLoad()) return devfreq.load();
    return needsClients() ? std::optional(clients.load()) : std::nullopt;
  }

  std::optional<double> megahertz() {
    if (card.hasClock()) return card.megahertz();
    if (devfreq.exists()) {
      const auto hertz = devfreq.hertz();
      return hertz ? std::optional(double(*hertz) / 1e6) : std::nullopt;
    }
    return clients.megahertz();
  }

  void take() {
    if (needsClients()) clients.read();
    // What is missing for the moment (a card that sleeps) is nothing done.
    sample = {.megahertz = megahertz().value_or(0),
              .load = load().value_or(0),
              .busLoad = card.busLoad().value_or(0)};
  }

  void sayWhatIsMissing();
};

void State::sayWhatIsMissing() {
  if (!isThere()) {
    noticeOnce("no GPU: neither /sys/class/drm nor /sys/class/devfreq has one");
    return;
  }
  if (!megahertz()) noticeOnce("no GPU frequency so far: no card, devfreq or fdinfo states it");
  if (needsClients() ? !clients.countEngineTime() : !load()) {
    noticeOnce("no GPU utilization so far: no card, devfreq or fdinfo states it");
  }
  if (!card.hasBusLoad()) noticeOnce("no GPU bus load: the card has no mem_busy_percent");
  noticeOnce("no GPU bandwidths: no kernel interface counts them");
}

}  // namespace

GPU_MON::GPU_MON() {
  auto* state = new State;
  attach(opaque_, state);
  state->take();
  state->sayWhatIsMissing();
}

GPU_MON::~GPU_MON() {
  delete &attached<State>(opaque_);
}

std::vector<std::string> GPU_MON::corvane_getGPUHeaders() {
  return {"GPU Frequency(MHz)", "GPU Utilization(%)", "GPU Bus Busy(%)", "GPU Read BW(MB/s)",
          "GPU Write BW(MB/s)"};
}

int GPU_MON::corvane_getGPUSample() {
  auto& state = attached<State>(opaque_);
  if (!state.isThere()) return -1;
  state.take();
  return 0;
}

float GPU_MON::corvane_getGPUFrequency() {
  return float(attached<State>(opaque_).sample.megahertz);
}

float GPU_MON::corvane_gpuBusBusy() {
  return float(attached<State>(opaque_).sample.busLoad);
}

float GPU_MON::corvane_getGPUUtilization() {
  return float(attached<State>(opaque_).sample.load);
}

// Members all the same, so that a library that can count them fits the interface.
float GPU_MON::corvane_getReadBandwidth() {
  return 0;
}

float GPU_MON::corvane_getWriteBandwidth() {
  return 0;
}

}  // namespace gpu
