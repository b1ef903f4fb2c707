#include "devfreq.h"

std::string findDevfreq(std::initializer_list<DevfreqTest> tests) {
  const std::string entries = "/sys/class/devfreq/";
  const auto names = listFolder(entries);
  for (const auto& passes : tests) {
    for (const auto& name : names) {
      if (passes(entries + name)) return entries + name;
    }
  }
  return {};
}

Devfreq::Devfreq(const std::string& folder) {
  if (folder.empty()) return;
  frequency_ = Attribute(folder + "/cur_freq");
  load_ = Attribute(folder + "/load");
}
