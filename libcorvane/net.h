#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// What an interface has counted, since it came up or in a period. A column that is missing is 0.
struct NetCounters {
  std::uint64_t collisions = 0;
  std::uint64_t txBytes = 0, rxBytes = 0;
  std::uint64_t txPackets = 0, rxPackets = 0;
  std::uint64_t txDropped = 0, rxDropped = 0;
};

struct NetLine {
  std::string_view name;
  NetCounters counters;
};

/// One line of `/proc/net/dev`; nothing for the two lines of headings.
std::optional<NetLine> parseNetLine(std::string_view line);

NetCounters netTraffic(const NetCounters& before, const NetCounters& now);
