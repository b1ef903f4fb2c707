#include "process_tracker.h"

#include <algorithm>
#include <functional>

namespace runs {

namespace {

constexpr std::size_t cpuListing = 0, memoryListing = 1;

/// Ended processes pile up to this number before they are sorted out.
constexpr std::size_t mostEnded = 6 * keptEnded;

/// Names of one process that are remembered; there are some that say in it what they do just now.
constexpr std::size_t mostNames = 8;

/// Samples of a listing from one look at the room that envelopes take to the next.
constexpr std::uint64_t roomInterval = 32;

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
  const double noise = entry.called[which].text == fields[nameField] ? clockNoise : 0;
  return numberOf(fields[listing.totalField]).value_or(0) >= entry.total - noise;
}

ProcessTracker::Table::Index ProcessTracker::enter(int pid) {
  const auto index = table_.add(pid);
  auto& process = table_[index].process;
  process.pid = pid;
  process.cpuEnvelope = process.pssEnvelope = Envelope(envelopes_);
  ++count;
  return index;
}

void ProcessTracker::setName(Entry& entry, std::size_t which, std::string_view name, double time) {
  if (which == cpuListing) settleTime(entry);
  auto& called = entry.called[which];
  called.text = name;
  called.name = nameOf(entry, called.text, time);
  if (called.name != nullptr) entry.process.name = called.text;
}

/// The name's entry, in which the process is counted once however often it comes back to the name;
/// null where it is not meant.
NameTable::Entry* ProcessTracker::nameOf(Entry& entry, const std::string& text, double time) {
  if (!filter_.has(entry.process.pid, text)) return nullptr;
  auto& borne = entry.names;
  for (auto* const name : borne) {
    if (name->sum.name == text) return name;
  }
  if (borne.empty()) entry.process.first = time;
  if (borne.size() == mostNames) {
    const auto left = std::ranges::find_if(borne, [&](const NameTable::Entry* name) {
      return name != entry.called[cpuListing].name && name != entry.called[memoryListing].name;
    });
    nameTable_.leave(**left);
    borne.erase(left);
  }
  return borne.emplace_back(&nameTable_.enter(text, time));
}

/// Hands the processor time of late to the name that it was used under.
void ProcessTracker::settleTime(Entry& entry) {
  auto* const name = entry.called[cpuListing].name;
  if (name != nullptr) name->sum.cpuSeconds += entry.total - entry.beforeName;
  entry.beforeName = entry.total;
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
  if (index == Table::none) index = enter(*pid);
  auto& entry = table_[index];
  if (entry.sample[which] == 0 || entry.called[which].text != fields[nameField])
    setName(entry, which, fields[nameField], sample.time);
  listing.order.now.push_back(index);
  takeCpu(entry, listing, sample, fields);
  takePss(entry, listing, sample, fields);
  entry.sample[which] = listing.sample;
  if (entry.called[which].name != nullptr) entry.process.last = sample.time;
}

void ProcessTracker::takeCpu(Entry& entry, Listing& listing, const Sample& sample,
                             const Fields& fields) {
  auto* const name = entry.called[cpuListing].name;
  if (listing.totalField != 0) {
    const double before = entry.total;
    entry.total = numberOf(fields[listing.totalField]).value_or(entry.total);
    // A process that was there from the start has used time before the part that is meant.
    const bool isFirst = entry.sample[cpuListing] == 0;
    if (isFirst) entry.notMeant = entry.beforeName = listing.sample == 1 ? entry.total : 0;
    if (name == nullptr)
      entry.notMeant = isFirst ? entry.total : entry.notMeant + entry.total - before;
    entry.process.cpuSeconds = entry.total - entry.notMeant;
  }
  if (listing.cpuField == 0 || name == nullptr) return;
  const auto usage = numberOf(fields[listing.cpuField]);
  if (!usage) return;
  auto& process = entry.process;
  process.cpu.add(*usage);
  addToName(*name, listing, cpuListing, *usage);
  if (envelopes_ != 0) process.cpuEnvelope.add(sample.time, *usage);
  if (followMoments_ && *usage > 0)
    moments.candidate({process.pid, name->sum.name, *usage / 100 * sample.period});
}

void ProcessTracker::takePss(Entry& entry, Listing& listing, const Sample& sample,
                             const Fields& fields) {
  auto* const name = entry.called[memoryListing].name;
  if (listing.pssField == 0 || name == nullptr) return;
  const auto pss = numberOf(fields[listing.pssField]);
  if (!pss) return;
  entry.process.pss.add(sample.time, *pss);
  addToName(*name, listing, memoryListing, *pss);
  if (envelopes_ != 0) entry.process.pssEnvelope.add(sample.time, *pss);
}

void ProcessTracker::addToName(NameTable::Entry& name, Listing& listing, std::size_t which,
                               double value) {
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
    sum.last = listing.time;
    if (which == cpuListing) {
      sum.cpu.add(name->now[which]);
      if (envelopes_ != 0) sum.cpuEnvelope.add(listing.time, name->now[which]);
    } else {
      sum.pss.add(listing.time, name->now[which]);
      if (envelopes_ != 0) sum.pssEnvelope.add(listing.time, name->now[which]);
    }
  }
  listing.names.clear();
}

/// Detail is for all while they are few or the run is short.
void ProcessTracker::saveRoom() {
  auto all = eachOf(processes);
  for (const auto index : table_.all())
    all.push_back(&table_[index].process);
  nameTable_.forEach([&](Process& sum) { all.push_back(&sum); });
  coarsenAllButTop(all);
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
  if (envelopes_ > Envelope::smallCapacity && listing.sample % roomInterval == 0) saveRoom();
}

void ProcessTracker::retire(Table::Index index) {
  auto entry = table_.take(index);
  if (entry.names.empty()) return;
  settleTime(entry);
  for (auto* const name : entry.names)
    nameTable_.leave(*name);
  processes.push_back(std::move(entry.process));
  if (processes.size() > mostEnded) keepTop(processes, keptEnded);
}

void ProcessTracker::finish() {
  keepTop(processes, keptEnded);
  for (const auto index : table_.all()) {
    auto& entry = table_[index];
    if (entry.names.empty()) continue;
    entry.process.alive = true;
    settleTime(entry);
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
