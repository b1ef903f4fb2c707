#include "dsp.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <string>

#include "attribute.h"
#include "devfreq.h"
#include "dsp_mon.h"
#include "kernel_file.h"
#include "notice.h"
#include "opaque.h"

std::optional<DspSample> dspSample(const DspReading& reading) {
  if (reading.running == false) return DspSample{};
  if (!reading.hertz) return std::nullopt;
  return DspSample{.frequency = long(*reading.hertz), .load = float(reading.load.value_or(0))};
}

bool isRunning(std::string_view state) {
  // Attached: it was started before the kernel was.
  return state == "running" || state == "attached";
}

bool holdsWord(std::string_view text, std::string_view word) {
  const auto isEdge = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; };
  for (auto at = text.find(word); at != text.npos; at = text.find(word, at + 1)) {
    const auto end = at + word.size();
    if ((at == 0 || isEdge(text[at - 1])) && (end == text.size() || isEdge(text[end]))) return true;
  }
  return false;
}

namespace dsp {

namespace {

constexpr const char* remoteprocFolder = "/sys/class/remoteproc/";

/// Many drivers name the processor after its address only; what it runs then tells which it is.
bool isCalled(const std::string& folder, std::string_view name) {
  const auto firmware = readAttribute(folder + "/firmware").value_or("");
  return holdsWord(readAttribute(folder + "/name").value_or(""), name) ||
         holdsWord(std::string_view(firmware).substr(firmware.rfind('/') + 1), name);
}

/// The folder of the remote processor; empty where there is none.
std::string findRemoteproc(std::string_view name) {
  for (const auto& entry : listFolder(remoteprocFolder)) {
    if (isCalled(remoteprocFolder + entry, name)) return remoteprocFolder + entry;
  }
  return {};
}

/// The entry of the same device, else the one whose name ends in the processor's ("soc:cdsp"). One
/// that only mentions it ("cdsp-l3-lat") is the clock of something else.
Devfreq findClock(std::string_view name, const std::string& remoteproc) {
  const auto device = resolvedPath(remoteproc + "/device");
  const auto isOfDevice = [&](const std::string& folder) {
    return !remoteproc.empty() && device && resolvedPath(folder + "/device") == device;
  };
  const auto isNamedAfterIt = [&](const std::string& folder) {
    return std::string_view(folder).substr(folder.find_last_of("/.:,") + 1) == name;
  };
  return Devfreq(findDevfreq({isOfDevice, isNamedAfterIt}));
}

std::string nameOf(int slot) {
  return slot == 2 ? "adsp" : "cdsp";
}

struct State {
  int slot;
  int (*wait)(int);
  std::string name;
  std::string remoteproc;
  Attribute state;
  Devfreq clock;
  DspSample sample;

  State(int slotNumber, int (*waitFunction)(int))
      : slot(slotNumber),
        wait(waitFunction),
        name(nameOf(slot)),
        remoteproc(findRemoteproc(name)),
        clock(findClock(name, remoteproc)) {
    if (!remoteproc.empty()) state = Attribute(remoteproc + "/state");
    if (clock.exists() && !clock.hasLoad()) {
      noticeOnce("no " + name + " load: its entry in /sys/class/devfreq has none");
    }
  }

  bool isThere() const { return !remoteproc.empty() || clock.exists(); }

  DspReading read() {
    DspReading reading;
    reading.hertz = clock.hertz();
    reading.load = clock.load();
    if (const auto text = state.text()) reading.running = isRunning(*text);
    return reading;
  }

  void sayWhatIsMissing() const {
    if (remoteproc.empty()) {
      noticeOnce("no " + name + ": nothing in /sys/class/remoteproc or /sys/class/devfreq is it");
    } else {
      noticeOnce("no " + name + " clock: nothing in /sys/class/devfreq belongs to " + remoteproc);
    }
  }
};

}  // namespace

DSP_MON::DSP_MON(int slot, int (*wait)(int)) {
  attach(opaque_, new State(slot, wait));
}

DSP_MON::~DSP_MON() {
  delete &attached<State>(opaque_);
}

int DSP_MON::corvane_getDSPSample() {
  auto& state = attached<State>(opaque_);
  // For a processor that is not there no period is waited.
  if (state.isThere() && state.wait(state.slot) != ETIMEDOUT) return -1;
  const auto sample = dspSample(state.read());
  if (!sample) {
    state.sayWhatIsMissing();
    return -1;
  }
  state.sample = *sample;
  return 0;
}

long DSP_MON::corvane_getDSPFrequency() {
  return attached<State>(opaque_).sample.frequency;
}

float DSP_MON::corvane_getDSPUtilization() {
  return attached<State>(opaque_).sample.load;
}

}  // namespace dsp
