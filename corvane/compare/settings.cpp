#include "settings.h"

#include <algorithm>
#include <cmath>

namespace {

/// To two digits: a period as it is measured wobbles.
std::string periodText(double seconds) {
  if (seconds <= 0) return "";
  const double scale = std::pow(10, std::floor(std::log10(seconds)) - 1);
  char text[32];
  std::snprintf(text, sizeof text, "%g ms", std::round(seconds / scale) * scale * 1000);
  return text;
}

std::string joined(const std::vector<std::string>& words) {
  std::string all;
  for (const auto& word : words)
    all += (all.empty() ? "" : " ") + word;
  return all;
}

std::string joined(const std::set<std::string>& values) {
  constexpr std::size_t most = 3;
  std::string all;
  std::size_t count = 0;
  for (const auto& value : values) {
    if (count == most) return all + ", ...";
    all += (count++ == 0 ? "" : ", ") + value;
  }
  return all;
}

}  // namespace

void Settings::note(int side, const std::string& what, const std::string& value) {
  if (value.empty()) return;
  if (std::ranges::find(order_, what) == order_.end()) order_.push_back(what);
  values_[side][what].insert(value);
}

void Settings::add(int side, const runs::RunSummary& run) {
  if (run.metadata) {
    const auto& metadata = *run.metadata;
    const auto& host = metadata.host;
    note(side, "machine", host.name);
    note(side, "model", host.model);
    note(side, "kernel", host.kernel);
    note(side, "cores", host.cores > 0 ? std::to_string(host.cores) : "");
    note(side, "online cores", host.onlineCores);
    note(side, "memory", host.memoryKb > 0 ? std::to_string(host.memoryKb) + " KB" : "");
    for (const auto& policy : host.frequencies)
      note(side, "governor of cores " + policy.cores, policy.governor);
    note(side, "command", metadata.command ? joined(metadata.command->arguments) : "none");
    note(side, "monitor library", metadata.profiler.monitorLibrary);
  }
  std::vector<std::string> words;
  for (const auto& source : run.sources) {
    if (source.samples == 0) continue;
    words.push_back(source.word);
    note(side, "period of " + source.word, periodText(source.period));
  }
  note(side, "sources", joined(words));
}

std::vector<std::string> Settings::differences() const {
  std::vector<std::string> sentences;
  for (const auto& what : order_) {
    const auto base = values_[0].find(what);
    const auto fresh = values_[1].find(what);
    // A source that one side lacks is told by the sources.
    if (base == values_[0].end() || fresh == values_[1].end()) continue;
    if (base->second != fresh->second)
      sentences.push_back(what + ": " + joined(base->second) + " against " + joined(fresh->second));
  }
  return sentences;
}
