#include "gpu_card.h"
#include "gpu_clients.h"
#include "gpu_driver.h"
#include "gpu_mon.h"
#include "notice.h"
#include "opaque.h"

namespace gpu {

namespace {

/// What is missing for the moment (a card that sleeps) is nothing done.
float orNothing(std::optional<double> value) {
  return float(value.value_or(0));
}

struct Sample {
  std::optional<double> megahertz, load, busLoad;
};

struct State {
  GpuCard card = GpuCard::find();
  // Looking through all classes is needless where the card states everything.
  GpuDriver driver = card.hasLoad() && card.hasClock() ? GpuDriver() : GpuDriver::find();
  GpuClients clients;
  bool hasDrm = hasDrmDevice();
  Sample sample;

  bool isThere() const { return hasDrm || driver.hasLoad() || driver.hasClock(); }

  /// Reading the clients costs most, so it is done only where nothing else knows the load.
  bool needsClients() const { return hasDrm && !card.hasLoad() && !driver.hasLoad(); }

  std::optional<double> load() {
    if (card.hasLoad()) return card.load();
    if (driver.hasLoad()) return driver.load();
    return clients.countEngineTime() ? std::optional(clients.load()) : std::nullopt;
  }

  std::optional<double> megahertz() {
    if (card.hasClock()) return card.megahertz();
    return driver.hasClock() ? driver.megahertz() : clients.megahertz();
  }

  /// Reads every attribute once: some count anew from each reading.
  void take() {
    if (needsClients()) clients.read();
    sample = {.megahertz = megahertz(), .load = load(), .busLoad = card.busLoad()};
  }

  void sayWhatIsMissing() const;
};

void State::sayWhatIsMissing() const {
  if (!isThere()) {
    noticeOnce("no GPU: none of /sys/class/drm/{card*,renderD*}, " + GpuDriver::allPatterns());
    return;
  }
  if (!sample.megahertz) {
    noticeOnce("no GPU frequency so far: none of the clocks of /sys/class/drm/card*, " +
               GpuDriver::clockPatterns() + " or DRM fdinfo");
  }
  if (!sample.load) {
    noticeOnce("no GPU utilization so far: none of /sys/class/drm/card*/device/gpu_busy_percent, " +
               GpuDriver::loadPatterns() + " or DRM fdinfo");
  }
  if (!card.hasBusLoad()) noticeOnce("no GPU bus load: no card has a mem_busy_percent");
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
  return orNothing(attached<State>(opaque_).sample.megahertz);
}

float GPU_MON::corvane_gpuBusBusy() {
  return orNothing(attached<State>(opaque_).sample.busLoad);
}

float GPU_MON::corvane_getGPUUtilization() {
  return orNothing(attached<State>(opaque_).sample.load);
}

// Members all the same, so that a library that can count them fits the interface.
float GPU_MON::corvane_getReadBandwidth() {
  return 0;
}

float GPU_MON::corvane_getWriteBandwidth() {
  return 0;
}

}  // namespace gpu
