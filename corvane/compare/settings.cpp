#include "settings.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "words.h"

namespace {

/// To two digits: a period as it is measured wobbles.
std::string periodText(double seconds) {
  if (seconds <= 0) return "";
  const double scale = std::pow(10, std::floor(std::log10(seconds)) - 1);
  char text[32];
  std::snprintf(text, sizeof text, "%g ms", std::round(seconds / scale) * scale * 1000);
  return text;
}

std::string shown(const std::set<std::string>& values) {
  return listed({values.begin(), values.end()}, ", ");
}

std::string secondsText(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, seconds < 100 ? "%.3g s" : "%.0f s", seconds);
  return text;
}

}  // namespace

std::string listed(const std::vector<std::string>& words, const std::string& between) {
  constexpr std::size_t most = 4;
  std::string all;
  const auto shown = std::min(words.size(), most);
  for (std::size_t at = 0; at < shown; ++at)
    all += (at == 0 ? "" : between) + words[at];
  if (words.size() > shown) all += " and " + std::to_string(words.size() - shown) + " more";
  return all;
}

void Settings::note(int side, const std::string& what, const std::string& value) {
  if (value.empty()) return;
  if (std::ranges::find(order_, what) == order_.end()) order_.push_back(what);
  values_[side][what].insert(value);
}

void Settings::noteMetadata(int side, const runs::Metadata& metadata) {
  const auto noteOptional = [&](const std::string& what, const std::string& value) {
    optional_.insert(what);
    note(side, what, value);
  };
  const auto& host = metadata.host;
  note(side, "machine", host.name);
  note(side, "model", host.model);
  note(side, "kernel", host.kernel);
  note(side, "architecture", host.architecture);
  note(side, "cores", host.cores > 0 ? std::to_string(host.cores) : "");
  note(side, "online cores", host.onlineCores);
  for (const auto& processor : host.processors)
    note(side, "processor of cores " + processor.cores, processor.name);
  note(side, "memory", host.memoryKb > 0 ? std::to_string(host.memoryKb) + " KB" : "");
  for (const auto& policy : host.frequencies) {
    noteOptional("governor of cores " + policy.cores, policy.governor);
    if (policy.maxKhz > 0) {
      noteOptional("maximum clock of cores " + policy.cores,
                   std::to_string(policy.maxKhz / 1000) + " MHz");
    }
  }
  for (const auto& [property, value] : host.android)
    note(side, property, value);
  note(side, "command", metadata.command ? joined(metadata.command->arguments, " ") : "none");
  note(side, "profiler", metadata.profiler.version);
  note(side, "monitor library", metadata.profiler.monitorLibrary);
  for (const auto& [label, value] : metadata.labels)
    noteOptional("label " + label, value);
}

void Settings::add(int side, const runs::RunSummary& run) {
  note(side, "metadata", run.metadata ? "there" : "missing");
  if (run.metadata) noteMetadata(side, *run.metadata);
  std::vector<std::string> words;
  for (const auto& source : run.sources) {
    if (source.samples == 0) continue;
    words.push_back(source.word);
    note(side, "period of " + source.word, periodText(source.period));
  }
  note(side, "sources", joined(words, " "));
  seconds_[side] += run.last - run.first;
  ++runs_[side];
}

std::string Settings::lengths() const {
  constexpr double alike = 1.2;
  if (runs_[0] == 0 || runs_[1] == 0) return "";
  const double base = seconds_[0] / double(runs_[0]);
  const double fresh = seconds_[1] / double(runs_[1]);
  if (std::max(base, fresh) <= alike * std::min(base, fresh)) return "";
  return "length: " + secondsText(base) + " against " + secondsText(fresh);
}

std::vector<std::string> Settings::differences() const {
  std::vector<std::string> sentences;
  for (const auto& what : order_) {
    const auto base = values_[0].find(what);
    const auto fresh = values_[1].find(what);
    const bool onBoth = base != values_[0].end() && fresh != values_[1].end();
    // A source that one side lacks is told by the sources, metadata by one sentence.
    if (!onBoth && (!optional_.contains(what) || !bothHaveMetadata())) continue;
    const auto left = base == values_[0].end() ? "none" : shown(base->second);
    const auto right = fresh == values_[1].end() ? "none" : shown(fresh->second);
    if (left != right || (onBoth && base->second != fresh->second))
      sentences.push_back(what + ": " + left + " against " + right);
  }
  if (auto sentence = lengths(); !sentence.empty()) sentences.push_back(std::move(sentence));
  return sentences;
}

bool Settings::bothHaveMetadata() const {
  return std::ranges::all_of(values_, [](const auto& values) {
    const auto found = values.find("metadata");
    return found != values.end() && found->second.contains("there");
  });
}
