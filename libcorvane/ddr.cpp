#include "ddr.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "ddr_mon.h"
#include "notice.h"
#include "opaque.h"
#include "pmu.h"
#include "steady_time.h"

std::optional<MemoryLevel> levelOf(std::string_view unit) {
  const auto holds = [unit](std::string_view term) { return unit.find(term) != unit.npos; };
  if (holds("llc") || holds("l3") || holds("slc")) return MemoryLevel::lastLevelCache;
  if (holds("imc") || holds("ddr") || holds("dmc") || holds("umc") || holds("cabo")) {
    return MemoryLevel::controller;
  }
  return std::nullopt;
}

std::optional<Direction> directionOf(std::string_view event) {
  std::optional<Direction> total;
  while (!event.empty()) {
    const auto word = event.substr(0, event.find_first_of("-_"));
    event.remove_prefix(std::min(event.size(), word.size() + 1));
    if (word == "read" || word == "reads" || word == "rd") return Direction::read;
    if (word == "write" || word == "writes" || word == "wr") return Direction::write;
    if (word == "total") total = Direction::both;
  }
  return total;
}

MemoryBandwidths memoryBandwidths(const MemoryTraffic& bytes, std::chrono::nanoseconds passed) {
  MemoryBandwidths figures{};
  const double seconds = std::chrono::duration<double>(passed).count();
  for (std::size_t level = 0; level < bytes.size(); ++level) {
    const auto rate = [&](std::size_t direction) {
      return std::int64_t(std::llround(bytes[level][direction] / 0x1p20 / seconds));
    };
    figures[3 * level] = rate(0);
    figures[3 * level + 1] = rate(1);
    figures[3 * level + 2] = figures[3 * level] + figures[3 * level + 1] + rate(2);
  }
  return figures;
}

namespace ddr {

namespace {

struct Counter {
  MemoryLevel level;
  Direction direction;
  double bytes;  ///< of one count
  Descriptor descriptor;
  CounterReading reading;
};

/// One kind of unit has many instances, told apart by numbers ("uncore_imc_0", "_1").
std::string kindOf(std::string unit) {
  std::erase_if(unit, [](unsigned char c) { return std::isdigit(c) != 0; });
  return unit;
}

struct TrafficEvent {
  PmuEvent event;
  Direction direction;
};

/// Events by kind of unit.
using EventsByKind = std::map<std::string, std::vector<TrafficEvent>>;

EventsByKind eventsAt(MemoryLevel level) {
  EventsByKind events;
  for (const auto& unit : listFolder("/sys/bus/event_source/devices")) {
    if (levelOf(unit) != level) continue;
    for (auto& event : byteEvents(unit)) {
      const auto direction = directionOf(event.name);
      if (direction) events[kindOf(unit)].push_back({std::move(event), *direction});
    }
  }
  return events;
}

bool counts(const std::vector<TrafficEvent>& events, Direction direction) {
  return std::ranges::find(events, direction, &TrafficEvent::direction) != events.end();
}

/// Events for each way are worth most, then one for both ways together, then one for one way.
int worthOf(const std::vector<TrafficEvent>& events) {
  if (counts(events, Direction::read) && counts(events, Direction::write)) return 2;
  return counts(events, Direction::both) ? 1 : 0;
}

/// Two kinds of unit at one level count the same traffic, so one kind has to do; and so do events
/// for both ways together and for each.
std::vector<TrafficEvent> chooseEvents(MemoryLevel level) {
  const auto kinds = eventsAt(level);
  const auto best =
      std::ranges::max_element(kinds, {}, [](const auto& kind) { return worthOf(kind.second); });
  if (best == kinds.end()) return {};
  auto events = best->second;
  const bool takesBoth = worthOf(events) == 1;
  std::erase_if(events, [&](const TrafficEvent& event) {
    return (event.direction == Direction::both) != takesBoth;
  });
  return events;
}

struct State {
  std::vector<Counter> counters;
  SteadyTime lastReading;
  MemoryBandwidths figures{};

  State() {
    open(MemoryLevel::lastLevelCache, "last-level cache");
    open(MemoryLevel::controller, "memory controller");
    begin();
  }

  /// Takes the first reading.
  void begin() {
    sample();
    figures = {};
  }

  void open(MemoryLevel level, const std::string& name) {
    const auto events = chooseEvents(level);
    if (events.empty()) {
      noticeOnce("no " + name + " traffic: no unit of /sys/bus/event_source/devices counts it");
    }
    for (const auto& [event, direction] : events) {
      for (const int cpu : event.cpus)
        open(level, direction, event, cpu);
    }
  }

  void open(MemoryLevel level, Direction direction, const PmuEvent& event, int cpu) {
    auto descriptor = openCounter(event, cpu);
    if (!descriptor) {
      noticeOnce("no memory traffic of " + event.unit + "/" + event.name + ": " +
                 std::strerror(errno));
      return;
    }
    counters.push_back({.level = level,
                        .direction = direction,
                        .bytes = event.bytes,
                        .descriptor = std::move(descriptor),
                        .reading = {}});
  }

  MemoryTraffic read() {
    MemoryTraffic bytes{};
    for (auto& counter : counters) {
      const auto now = readCounter(counter.descriptor);
      if (!now) continue;
      bytes[std::size_t(counter.level)][std::size_t(counter.direction)] +=
          counted(counter.reading, *now) * counter.bytes;
      counter.reading = *now;
    }
    return bytes;
  }

  void sample() {
    const auto now = steadyNow();
    if (now <= lastReading) return;
    figures = memoryBandwidths(read(), now - lastReading);
    lastReading = now;
  }
};

}  // namespace

DDR_MON::DDR_MON() {
  attach(opaque_, new State);
}

DDR_MON::~DDR_MON() {
  delete &attached<State>(opaque_);
}

void DDR_MON::corvane_setSamplingTime(int) {
  attached<State>(opaque_).begin();
}

std::int64_t* DDR_MON::corvane_getDDRStats() {
  auto& state = attached<State>(opaque_);
  state.sample();
  return state.figures.data();
}

}  // namespace ddr
