#include "devfreq.h"

#include <algorithm>

namespace {

constexpr const char* devfreqFolder = "/sys/class/devfreq/";

std::string_view lastWord(std::string_view name) {
  return name.substr(name.find_last_of(".:,") + 1);
}

}  // namespace

Devfreq Devfreq::find(std::string_view kind,
                      const std::function<bool(const std::string& folder)>& isOfDevice) {
  const auto names = listFolder(devfreqFolder);
  auto found = std::ranges::find_if(
      names, [&](const auto& name) { return isOfDevice(devfreqFolder + name); });
  if (found == names.end()) {
    found = std::ranges::find_if(names, [&](const auto& name) { return lastWord(name) == kind; });
  }
  Devfreq entry;
  if (found == names.end()) return entry;
  entry.frequency_ = Attribute(devfreqFolder + *found + "/cur_freq");
  entry.load_ = Attribute(devfreqFolder + *found + "/load");
  return entry;
}

std::optional<double> Devfreq::load() {
  const auto percent = load_.number();
  return percent ? std::optional(std::min(double(*percent), 100.0)) : std::nullopt;
}
