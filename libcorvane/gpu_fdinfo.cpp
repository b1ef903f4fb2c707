#include "gpu_fdinfo.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "counters.h"
#include "text_scan.h"

namespace {

bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

EngineUse* engineOf(DrmClient& client, std::string_view name) {
  const auto end = client.engines.begin() + std::ptrdiff_t(client.engineCount);
  const auto found = std::find_if(client.engines.begin(), end,
                                  [&](const EngineUse& engine) { return engine.name == name; });
  if (found != end) return &*found;
  if (client.engineCount == DrmClient::mostEngines) return nullptr;
  ++client.engineCount;
  *found = EngineUse{.name = std::string(name)};
  return &*found;
}

double megahertzOf(std::string_view value) {
  const auto number = double(nextNumber(value).value_or(0));
  const auto unit = nextWord(value);
  return unit == "MHz" ? number : unit == "KHz" ? number / 1e3 : number / 1e6;
}

void takeEngineField(std::string_view key, std::string_view value, DrmClient& client) {
  constexpr std::pair<std::string_view, std::uint64_t EngineUse::*> kinds[] = {
      {"engine-capacity-", &EngineUse::capacity},
      {"engine-", &EngineUse::busy},
      {"cycles-", &EngineUse::cycles},
      {"total-cycles-", &EngineUse::totalCycles},
  };
  if (takePrefix(key, "curfreq-"))
    client.megahertz = std::max(client.megahertz, megahertzOf(value));
  for (const auto& [prefix, member] : kinds) {
    if (!takePrefix(key, prefix)) continue;
    if (const auto number = nextNumber(value)) {
      if (auto* engine = engineOf(client, key)) engine->*member = *number;
    }
    return;
  }
}

const DrmClient* sameClient(std::span<const DrmClient> clients, const DrmClient& wanted) {
  const auto found = std::ranges::find_if(clients, [&](const DrmClient& client) {
    return client.id == wanted.id && client.device == wanted.device;
  });
  return found == clients.end() ? nullptr : &*found;
}

/// What all clients have used of one kind of engine of one device.
struct EngineTotal {
  std::string_view device, name;
  std::uint64_t busy = 0, cycles = 0, totalCycles = 0, capacity = 1;
};

void add(std::vector<EngineTotal>& totals, std::string_view device, const EngineUse& before,
         const EngineUse& now) {
  auto total = std::ranges::find_if(totals, [&](const EngineTotal& candidate) {
    return candidate.device == device && candidate.name == now.name;
  });
  if (total == totals.end()) {
    total = totals.insert(total, EngineTotal{.device = device, .name = now.name});
  }
  total->busy += advance(before.busy, now.busy);
  total->cycles += advance(before.cycles, now.cycles);
  total->totalCycles = std::max(total->totalCycles, advance(before.totalCycles, now.totalCycles));
  total->capacity = std::max(total->capacity, now.capacity);
}

double loadOf(const EngineTotal& total, std::chrono::nanoseconds passed) {
  const bool countsCycles = total.totalCycles > 0;
  const auto used = double(countsCycles ? total.cycles : total.busy);
  const auto possible = double(countsCycles ? total.totalCycles : std::uint64_t(passed.count()));
  return 100 * used / (possible * double(total.capacity));
}

/// Nothing where it is not a client's descriptor.
std::optional<DrmClient> parseFdinfo(std::string_view text) {
  DrmClient client;
  bool hasId = false;
  std::string_view line;
  while (nextLine(text, line)) {
    const auto colon = line.find(':');
    auto key = line.substr(0, colon);
    if (colon == std::string_view::npos || !takePrefix(key, "drm-")) continue;
    auto value = line.substr(colon + 1);
    // The bus address tells two cards of one driver apart; not every device has one.
    if (key == "pdev" || (key == "driver" && client.device.empty())) {
      client.device = nextWord(value);
    } else if (key == "client-id") {
      const auto id = nextNumber(value);
      hasId = id.has_value();
      client.id = id.value_or(0);
    } else {
      takeEngineField(key, value, client);
    }
  }
  return hasId ? std::optional(client) : std::nullopt;
}

}  // namespace

void addClient(std::vector<DrmClient>& clients, std::string_view fdinfo) {
  const auto client = parseFdinfo(fdinfo);
  if (client && sameClient(clients, *client) == nullptr) clients.push_back(*client);
}

double engineLoad(std::span<const DrmClient> before, std::span<const DrmClient> now,
                  std::chrono::nanoseconds passed) {
  std::vector<EngineTotal> totals;
  for (const auto& client : now) {
    const auto* earlier = sameClient(before, client);
    if (earlier == nullptr) continue;
    for (const auto& engine : client.used()) {
      const auto found = std::ranges::find(earlier->used(), engine.name, &EngineUse::name);
      if (found != earlier->used().end()) add(totals, client.device, *found, engine);
    }
  }
  double busiest = 0;
  for (const auto& total : totals)
    busiest = std::max(busiest, loadOf(total, passed));
  return std::min(busiest, 100.0);
}
