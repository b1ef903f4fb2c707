#include "process_tracker.h"

#include <algorithm>
#include <functional>

namespace runs {

namespace {

constexpr std::size_t cpuListing = 0, memoryListing = 1;

/// Two readings of one process's time may differ by this without it being another process.
constexpr double clockNoise = 0.02;

/// Ended processes pile up to this number before they are sorted out.
constexpr std::size_t mostEnded = 6 * keptEnded;

std::size_t fieldOf(const Source& source, std::string_view metric) {
  const auto* const column = source.find(metric);
  return column == nullptr ? 0 : column->field;
}

}  // namespace

void ProcessTracker::beginSample(const Sample& sample) {
  auto& listing = listings_[listingOf(sample)];
  if (listing.sample++ == 0) {
    listing.cpuField = fieldOf(*sample.source, "CPU_Usage");
    listing.totalField = fieldOf(*sample.source, "TotalTime");
    listing.pssField = fieldOf(*sample.source, "PSS");
  }
  listing.before = listing.time;
  listing.time = sample.time;
}

/// Whether the row is of the process that had its PID before. It is not where the process was
/// missing from a sample of this listing, and the other listing has not seen it since; nor where it
/// has used less time than before.
bool ProcessTracker::isSame(const Entry& entry, std::size_t which, const Fields& fields,
                            std::size_t nameField) const {
  const auto& listing = listings_[which];
  const auto& other = listings_[1 - which];
  const bool missed = entry.sample[which] != 0 && entry.sample[which] + 1 < listing.sample;
  const bool seenSince =
      entry.sample[1 - which] == other.sample && other.sample != 0 && other.time >= listing.before;
  if (missed && !seenSince) return false;
  if (listing.totalField == 0 || entry.sample[which] == 0) return true;
  const double noise = entry.process.name == fields[nameField] ? clockNoise : 0;
  return numberOf(fields[listing.totalField]).value_or(0) >= entry.total - noise;
}

ProcessTracker::Table::Index ProcessTracker::enter(int pid, std::string_view name, double time) {
  const auto index = table_.add(pid);
  auto& entry = table_[index];
  entry.process.pid = pid;
  entry.process.first = time;
  setName(entry, name);
  ++count;
  return index;
}

void ProcessTracker::setName(Entry& entry, std::string_view name) {
  if (entry.name != nullptr) nameTable_.leave(*entry.name);
  entry.process.name = name;
  const bool meant = selection_.hasProcess(entry.process.pid, entry.process.name);
  entry.name = meant ? &nameTable_.enter(entry.process.name) : nullptr;
}

void ProcessTracker::row(const Sample& sample, const Fields& fields) {
  const auto which = listingOf(sample);
  auto& listing = listings_[which];
  const auto pid = pidOf(fields[sample.source->pidField]);
  if (!pid || *pid < 0) return;
  const auto nameField = sample.source->nameField;
  auto index = table_.find(*pid, listing.order);
  if (index != Table::none && table_[index].sample[which] == listing.sample)
    return;  // listed twice
  if (index != Table::none && !isSame(table_[index], which, fields, nameField)) {
    retire(index);
    index = Table::none;
  }
  if (index == Table::none) index = enter(*pid, fields[nameField], sample.time);
  auto& entry = table_[index];
  if (entry.process.name != fields[nameField]) setName(entry, fields[nameField]);
  listing.order.now.push_back(index);
  takeCpu(entry, listing, sample, fields);
  takePss(entry, listing, sample, fields);
  entry.sample[which] = listing.sample;
  entry.process.last = sample.time;
}

void ProcessTracker::takeCpu(Entry& entry, Listing& listing, const Sample& sample,
                             const Fields& fields) {
  if (listing.totalField != 0) {
    entry.total = numberOf(fields[listing.totalField]).value_or(entry.total);
    // A process that was there from the start has used time before the part that is meant.
    const bool isFirst = entry.sample[cpuListing] == 0;
    if (isFirst) entry.totalAtFirst = listing.sample == 1 ? entry.total : 0;
    entry.process.cpuSeconds = entry.total - entry.totalAtFirst;
  }
  if (listing.cpuField == 0) return;
  const auto usage = numberOf(fields[listing.cpuField]);
  if (!usage) return;
  auto& process = entry.process;
  process.cpu.add(*usage);
  addToName(entry, listing, cpuListing, *usage);
  if (envelopes_ && entry.name != nullptr) process.cpuEnvelope.add(sample.time, *usage);
  if (followMoments_ && entry.name != nullptr && *usage > 0)
    moments.candidate({process.pid, entry.name->sum.name, *usage / 100 * sample.period});
}

void ProcessTracker::takePss(Entry& entry, Listing& listing, const Sample& sample,
                             const Fields& fields) {
  if (listing.pssField == 0) return;
  const auto pss = numberOf(fields[listing.pssField]);
  if (!pss) return;
  entry.process.pss.add(sample.time, *pss);
  addToName(entry, listing, memoryListing, *pss);
  if (envelopes_ && entry.name != nullptr) entry.process.pssEnvelope.add(sample.time, *pss);
}

void ProcessTracker::addToName(Entry& entry, Listing& listing, std::size_t which, double value) {
  if (entry.name == nullptr) return;
  auto& name = *entry.name;
  if (name.sample[which] != listing.sample) {
    name.sample[which] = listing.sample;
    name.now[which] = 0;
    listing.names.push_back(&name);
  }
  name.now[which] += value;
}

void ProcessTracker::sumNames(Listing& listing, std::size_t which) {
  for (auto* const name : listing.names) {
    auto& sum = name->sum;
    if (which == cpuListing) {
      sum.cpu.add(name->now[which]);
      if (envelopes_) sum.cpuEnvelope.add(listing.time, name->now[which]);
    } else {
      sum.pss.add(listing.time, name->now[which]);
      if (envelopes_) sum.pssEnvelope.add(listing.time, name->now[which]);
    }
  }
  listing.names.clear();
}

void ProcessTracker::endSample(const Sample& sample) {
  const auto which = listingOf(sample);
  auto& listing = listings_[which];
  sumNames(listing, which);
  if (which == cpuListing && followMoments_) moments.endSample(sample.time, sample.period);
  for (const auto index : listing.order.before) {
    const auto& entry = table_[index];
    const auto last = entry.sample[which];
    const auto other = entry.sample[1 - which];
    const bool ended =
        last != 0 && last < listing.sample && (other == 0 || other < listings_[1 - which].sample);
    if (ended) retire(index);
  }
  listing.order.before.swap(listing.order.now);
  listing.order.now.clear();
  listing.order.next = 0;
}

void ProcessTracker::retire(Table::Index index) {
  auto entry = table_.take(index);
  if (entry.name == nullptr) return;
  NameTable::addEnded(*entry.name, entry.process);
  nameTable_.leave(*entry.name);
  processes.push_back(std::move(entry.process));
  if (processes.size() > mostEnded) keepTop(processes, keptEnded);
}

void ProcessTracker::finish() {
  keepTop(processes, keptEnded);
  for (const auto index : table_.all()) {
    auto& entry = table_[index];
    if (entry.name == nullptr) continue;
    entry.process.alive = true;
    NameTable::addEnded(*entry.name, entry.process);
    processes.push_back(std::move(entry.process));
  }
  std::ranges::sort(processes, [](const Process& a, const Process& b) {
    return std::tuple(-a.cpuSeconds, -a.pss.peak, a.first, a.pid) <
           std::tuple(-b.cpuSeconds, -b.pss.peak, b.first, b.pid);
  });
  names = nameTable_.take();
  namesDropped = nameTable_.dropped();
}

}  // namespace runs
