#include "net.h"

#include <array>
#include <string>

#include "counters.h"
#include "kernel_file.h"
#include "kernel_list.h"
#include "names.h"
#include "net_mon.h"
#include "notice.h"
#include "opaque.h"
#include "period.h"
#include "text_scan.h"

std::optional<NetLine> parseNetLine(std::string_view line) {
  // The name may hold a colon, and the first number follows the last one without a blank.
  const auto colon = line.rfind(':');
  if (colon == std::string_view::npos) return std::nullopt;
  auto numbers = line.substr(colon + 1);
  line = line.substr(0, colon);
  const auto start = line.find_first_not_of(' ');
  if (start != std::string_view::npos) line.remove_prefix(start);
  std::array<std::uint64_t, 14> columns{};
  for (auto& column : columns)
    column = nextNumber(numbers).value_or(0);
  return NetLine{.name = line,
                 .counters = {.collisions = columns[13],
                              .txBytes = columns[8],
                              .rxBytes = columns[0],
                              .txPackets = columns[9],
                              .rxPackets = columns[1],
                              .txDropped = columns[11],
                              .rxDropped = columns[3]}};
}

NetCounters netTraffic(const NetCounters& before, const NetCounters& now) {
  return {.collisions = advance(before.collisions, now.collisions),
          .txBytes = advance(before.txBytes, now.txBytes),
          .rxBytes = advance(before.rxBytes, now.rxBytes),
          .txPackets = advance(before.txPackets, now.txPackets),
          .rxPackets = advance(before.rxPackets, now.rxPackets),
          .txDropped = advance(before.txDropped, now.txDropped),
          .rxDropped = advance(before.rxDropped, now.rxDropped)};
}

namespace net {

namespace {

struct Interface {
  std::string name, shownName;
  bool isNew = true;  ///< there is no reading before this one
  NetCounters counters, traffic;

  explicit Interface(std::string_view lineName)
      : name(lineName), shownName(safeName(lineName, longestDeviceName)) {}

  netStats record() const {
    return {.name = shownName,
            .collisions = traffic.collisions,
            .txBytes = traffic.txBytes,
            .rxBytes = traffic.rxBytes,
            .txPackets = traffic.txPackets,
            .rxPackets = traffic.rxPackets,
            .txDropped = traffic.txDropped,
            .rxDropped = traffic.rxDropped};
  }
};

struct State {
  /// Stays with the network namespace in which it was opened, whoever reads it later.
  KernelFile dev{"/proc/net/dev"};
  Period period;
  std::vector<Interface> interfaces;

  bool read() {
    const auto text = dev.read();
    if (!text) {
      noticeOnce("no network traffic: /proc/net/dev cannot be read");
      return false;
    }
    std::size_t count = 0;
    std::string_view rest = *text, line;
    while (nextLine(rest, line)) {
      const auto now = parseNetLine(line);
      if (!now) continue;
      const bool isNew = settle(interfaces, count, now->name);
      Interface& interface = interfaces[count++];
      interface.traffic = isNew ? NetCounters{} : netTraffic(interface.counters, now->counters);
      interface.counters = now->counters;
      interface.isNew = isNew;
    }
    interfaces.erase(interfaces.begin() + std::ptrdiff_t(count), interfaces.end());
    return true;
  }
};

}  // namespace

NET_MON::NET_MON() {
  auto* state = new State;
  attach(opaque_, state);
  state->read();
}

NET_MON::~NET_MON() {
  delete &attached<State>(opaque_);
}

void NET_MON::corvane_setSamplingTime(int milliseconds) {
  auto& state = attached<State>(opaque_);
  state.period.start(milliseconds);
  state.read();
}

std::vector<netStats> NET_MON::corvane_getNetstats() {
  auto& state = attached<State>(opaque_);
  state.period.wait();
  std::vector<netStats> records;
  if (!state.read()) return records;
  records.reserve(state.interfaces.size());
  for (const auto& interface : state.interfaces) {
    if (!interface.isNew) records.push_back(interface.record());
  }
  return records;
}

}  // namespace net
