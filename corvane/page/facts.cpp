#include "facts.h"

#include <nlohmann/json.hpp>
#include <string>

#include "words.h"

namespace {

using Json = nlohmann::ordered_json;

class Facts {
 public:
  void add(const std::string& name, const std::string& text) {
    if (!text.empty()) list_.push_back({name, text});
  }
  Json take() { return std::move(list_); }

 private:
  Json list_ = Json::array();
};

std::string megahertz(std::uint64_t kilohertz) {
  return std::to_string(kilohertz / 1000);
}

std::string endingOf(const runs::Ending& ending) {
  if (ending.status) return "status " + std::to_string(*ending.status);
  if (ending.signal) return "signal " + std::to_string(*ending.signal);
  return "";
}

void addHost(Facts& facts, const runs::Host& host) {
  facts.add("Host", host.name);
  facts.add("Model", host.model);
  facts.add("Kernel", host.kernel);
  facts.add("Architecture", host.architecture);
  for (const auto& processor : host.processors)
    facts.add("Processor", processor.name + " (cores " + processor.cores + ")");
  if (host.cores > 0)
    facts.add("Cores", std::to_string(host.cores) + ", online " + host.onlineCores);
  for (const auto& policy : host.frequencies) {
    facts.add("Cores " + policy.cores, policy.governor + ", " + megahertz(policy.minKhz) + " to " +
                                           megahertz(policy.maxKhz) + " MHz");
  }
  if (host.memoryKb > 0) facts.add("Memory", std::to_string(host.memoryKb / 1024) + " MB");
  if (host.pageSize > 0) facts.add("Page size", std::to_string(host.pageSize) + " bytes");
  for (const auto& [name, value] : host.android)
    facts.add(name, value);
}

void addRecording(Facts& facts, const runs::Metadata& metadata) {
  facts.add("Start", metadata.start.wallTime());
  facts.add("End", metadata.end ? metadata.end->wallTime() : "not told: cut off, or still running");
  if (metadata.command) {
    facts.add("Command", joined(metadata.command->arguments, " "));
    facts.add("Command ended", endingOf(metadata.command->ending));
  }
  for (const auto& [name, value] : metadata.labels)
    facts.add("Label " + name, value);
  facts.add("Profiler", joined(metadata.profiler.arguments, " "));
  facts.add("Version", metadata.profiler.version);
  facts.add("Library", metadata.profiler.monitorLibrary);
}

Json missingOf(const runs::Metadata& metadata) {
  Json list = Json::array();
  for (const auto& [source, reason] : metadata.missing)
    list.push_back(std::string(source).append(": ").append(reason));
  for (const auto& lines : {metadata.notices, metadata.faults}) {
    for (const auto& line : lines)
      list.push_back(line);
  }
  return list;
}

}  // namespace

Json factsOf(const std::optional<runs::Metadata>& metadata) {
  Json machine = Json::array(), missing = Json::array(), marks = Json::array();
  Facts facts;
  if (metadata) {
    const auto& kernel = metadata->host.kernel;
    for (const auto& word :
         {metadata->host.name, metadata->host.model, kernel.substr(0, kernel.find(" #"))})
      machine.push_back(word);
    addHost(facts, metadata->host);
    addRecording(facts, *metadata);
    missing = missingOf(*metadata);
    for (const auto& mark : metadata->marks)
      marks.push_back({metadata->secondsAt(double(mark.at.counter) / runs::nominalMhz), mark.text});
  }
  return {{"machine", std::move(machine)},
          {"facts", facts.take()},
          {"missing", std::move(missing)},
          {"marks", std::move(marks)}};
}
