#include "pmu.h"

#include <algorithm>
#include <cstdlib>
#include <linux/perf_event.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

#include "counters.h"
#include "cpu_list.h"

namespace {

const std::string unitsFolder = "/sys/bus/event_source/devices/";

/// Bytes of a unit of measurement; as everywhere in the kernel's figures, K is 2^10.
std::optional<double> bytesOf(std::string_view unit) {
  constexpr std::pair<std::string_view, double> units[] = {
      {"B", 1},       {"bytes", 1},    {"Bytes", 1},   {"KB", 0x1p10},  {"KiB", 0x1p10},
      {"MB", 0x1p20}, {"MiB", 0x1p20}, {"GB", 0x1p30}, {"GiB", 0x1p30},
  };
  const auto found = std::ranges::find(units, unit, &std::pair<std::string_view, double>::first);
  return found == std::end(units) ? std::nullopt : std::optional(found->second);
}

/// A number in the notations of event descriptions: decimal, or hexadecimal with 0x.
std::optional<std::uint64_t> toTermValue(const std::string& text) {
  char* end = nullptr;
  const std::uint64_t value = std::strtoull(text.c_str(), &end, 0);
  return text.empty() || *end != '\0' ? std::nullopt : std::optional(value);
}

/// Which of the three words a format or a term names; nothing for another name.
std::optional<std::size_t> configIndex(std::string_view name) {
  constexpr std::string_view names[] = {"config", "config1", "config2"};
  const auto* const found = std::ranges::find(names, name);
  if (found == std::end(names)) return std::nullopt;
  return std::size_t(found - std::begin(names));
}

/// Spreads a value over the bits of a format such as "config1:0-7,32-35".
bool placeBits(std::string_view format, std::uint64_t value, PmuEvent& event) {
  const auto colon = format.find(':');
  const auto index = configIndex(format.substr(0, colon));
  if (!index || colon == std::string_view::npos) return false;
  for (const int bit : parseCpuList(format.substr(colon + 1))) {
    if (bit > 63) return false;
    event.config[*index] |= (value & 1) << bit;
    value >>= 1;
  }
  return value == 0;
}

/// One term of a description: "event=0x04", "config1=3", or a flag alone.
bool applyTerm(const std::string& folder, std::string_view term, PmuEvent& event) {
  const auto equals = term.find('=');
  const std::string name(term.substr(0, equals));
  const auto value = equals == std::string_view::npos
                         ? std::optional<std::uint64_t>(1)
                         : toTermValue(std::string(term.substr(equals + 1)));
  if (!value) return false;
  if (const auto format = readAttribute(folder + "/format/" + name)) {
    return placeBits(*format, *value, event);
  }
  const auto index = configIndex(name);
  if (index) event.config[*index] = *value;
  return index.has_value();
}

bool applyTerms(const std::string& folder, std::string_view terms, PmuEvent& event) {
  while (!terms.empty()) {
    const auto term = terms.substr(0, terms.find(','));
    terms.remove_prefix(std::min(terms.size(), term.size() + 1));
    if (!applyTerm(folder, term, event)) return false;
  }
  return true;
}

/// Completes the event of this name; false where it is not described or counts no bytes.
bool describe(const std::string& folder, PmuEvent& event) {
  const std::string path = folder + "/events/" + event.name;
  const auto unit = bytesOf(readAttribute(path + ".unit").value_or(""));
  const auto terms = readAttribute(path);
  const auto scale = readNumber(path + ".scale");
  const bool isOdd = !scale && readAttribute(path + ".scale");
  if (!unit || !terms || isOdd) return false;
  event.bytes = *unit * scale.value_or(1);
  return applyTerms(folder, *terms, event);
}

/// "read-bytes0" is a part of what "read-bytes" counts, where there is such an event.
bool isPartOfAnother(const std::string& folder, const std::string& name) {
  const auto whole = name.substr(0, name.find_last_not_of("0123456789") + 1);
  return whole != name && readAttribute(folder + "/events/" + whole);
}

Descriptor openPerfCounter(const PmuEvent& event, int cpu) {
  perf_event_attr attributes{};
  attributes.size = sizeof attributes;
  attributes.type = event.type;
  attributes.config = event.config[0];
  attributes.config1 = event.config[1];
  attributes.config2 = event.config[2];
  attributes.read_format = PERF_FORMAT_TOTAL_TIME_ENABLED | PERF_FORMAT_TOTAL_TIME_RUNNING;
  constexpr pid_t everyProcess = -1;
  constexpr int noGroup = -1;
  return Descriptor(int(::syscall(SYS_perf_event_open, &attributes, everyProcess, cpu, noGroup,
                                  PERF_FLAG_FD_CLOEXEC)));
}

CounterOpener opener = openPerfCounter;

}  // namespace

std::vector<PmuEvent> byteEvents(const std::string& unit) {
  std::vector<PmuEvent> events;
  const std::string folder = unitsFolder + unit;
  const auto type = toTermValue(readAttribute(folder + "/type").value_or(""));
  if (!type) return events;
  auto cpus = parseCpuList(readAttribute(folder + "/cpumask").value_or(""));
  if (cpus.empty()) cpus.push_back(0);
  for (const auto& name : listFolder(folder + "/events")) {
    if (name.find('.') != name.npos || isPartOfAnother(folder, name)) continue;
    PmuEvent event{.unit = unit, .name = name, .type = std::uint32_t(*type), .cpus = cpus};
    if (describe(folder, event)) events.push_back(event);
  }
  return events;
}

double counted(const CounterReading& before, const CounterReading& now) {
  const auto running = advance(before.running, now.running);
  if (running == 0) return 0;
  const auto enabled = advance(before.enabled, now.enabled);
  return double(advance(before.value, now.value)) * double(enabled) / double(running);
}

Descriptor openCounter(const PmuEvent& event, int cpu) {
  return opener(event, cpu);
}

std::optional<CounterReading> readCounter(const Descriptor& counter) {
  CounterReading reading;
  const auto size = ::read(counter.get(), &reading, sizeof reading);
  return size == ssize_t(sizeof reading) ? std::optional(reading) : std::nullopt;
}

void setCounterOpener(CounterOpener replacement) {
  opener = replacement == nullptr ? openPerfCounter : replacement;
}
