#include "name_table.h"

#include <algorithm>
#include <functional>

namespace runs {

NameTable::Entry& NameTable::enter(const std::string& name, double time) {
  auto& entry = entries_[name];
  if (entry == nullptr) {
    entry = std::make_unique<Entry>();
    entry->sum.name = name;
    entry->sum.processes = 0;
    entry->sum.first = time;
    entry->sum.cpuEnvelope = entry->sum.pssEnvelope = Envelope(envelopes_);
  } else if (entry->living == 0) {
    --ended_;
  }
  entry->sum.last = time;
  ++entry->sum.processes;
  ++entry->living;
  return *entry;
}

void NameTable::leave(Entry& entry) {
  if (--entry.living != 0) return;
  ++ended_;
  if (ended_ > mostEnded) prune();
}

void NameTable::prune() {
  std::vector<Entry*> ended;
  for (const auto& [name, entry] : entries_) {
    if (entry->living == 0) ended.push_back(entry.get());
  }
  const auto cpu = [](const Entry* entry) { return entry->sum.cpuSeconds; };
  const auto peak = [](const Entry* entry) { return entry->sum.pss.peak; };
  constexpr auto keep = std::ptrdiff_t(mostEnded / 4);
  std::ranges::nth_element(ended, ended.begin() + keep, std::greater{}, cpu);
  std::ranges::nth_element(ended.begin() + keep, ended.begin() + 2 * keep, ended.end(),
                           std::greater{}, peak);
  for (auto at = ended.begin() + 2 * keep; at != ended.end(); ++at)
    entries_.erase(std::string((*at)->sum.name));
  dropped_ += ended.size() - std::size_t(2 * keep);
  ended_ = std::size_t(2 * keep);
}

std::vector<Process> NameTable::take() {
  std::vector<Process> names;
  names.reserve(entries_.size());
  for (auto& [name, entry] : entries_)
    names.push_back(std::move(entry->sum));
  entries_.clear();
  std::ranges::sort(names, [](const Process& a, const Process& b) {
    return a.cpuSeconds != b.cpuSeconds ? a.cpuSeconds > b.cpuSeconds : a.name < b.name;
  });
  return names;
}

}  // namespace runs
