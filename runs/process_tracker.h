#pragma once

#include <array>
#include <vector>

#include "moments.h"
#include "name_table.h"
#include "process_filter.h"
#include "process_table.h"
#include "processes.h"
#include "run_reader.h"

namespace runs {

/// Follows the processes through the rows of the two sources that list them, from their first
/// sample to their last one. Every sample counts under the name that it has in its file, so that
/// nothing is lost where a process gets another one.
class ProcessTracker {
 public:
  /// Envelopes of this capacity, 0 for none, are followed as long as there is room.
  ProcessTracker(ProcessFilter& filter, std::size_t envelopes, bool moments)
      : filter_(filter), envelopes_(envelopes), followMoments_(moments), nameTable_(envelopes) {}

  void beginSample(const Sample& sample);
  void row(const Sample& sample, const Fields& fields);
  void endSample(const Sample& sample);

  /// What was found, once all is read: processes and names with most processor time first.
  void finish();
  std::vector<Process> processes;
  std::vector<Process> names;
  std::uint64_t count = 0;
  std::uint64_t namesDropped = 0;
  Moments moments;

 private:
  /// What a listing calls a process. The two need not agree for a moment.
  struct Called {
    std::string text;
    NameTable::Entry* name = nullptr;  // null: a name that is not meant
  };
  struct Entry {
    Process process;                        // of the samples that are meant
    std::array<Called, 2> called;           // per listing
    std::vector<NameTable::Entry*> names;   // of those that are meant, which it had lately
    std::array<std::uint64_t, 2> sample{};  // the last one that had it, per listing; 0: none
    // Processor seconds since its start: those that are not meant, those before the present name.
    double notMeant = 0, beforeName = 0, total = 0;
  };
  using Table = ProcessTable<Entry>;
  /// One of the two sources.
  struct Listing {
    Table::Order order;
    std::uint64_t sample = 0;  // the number of the one that is being read, from 1
    double time = 0, before = 0;
    std::size_t cpuField = 0, totalField = 0, pssField = 0;  // 0: none
    std::vector<NameTable::Entry*> names;                    // of this sample
  };

  static std::size_t listingOf(const Sample& sample) {
    return sample.source->word == "proc" ? 0 : 1;
  }
  bool isSame(const Entry& entry, std::size_t which, const Fields& fields,
              std::size_t nameField) const;
  Table::Index enter(int pid);
  void setName(Entry& entry, std::size_t which, std::string_view name, double time);
  NameTable::Entry* nameOf(Entry& entry, const std::string& text, double time);
  static void settleTime(Entry& entry);
  void retire(Table::Index index);
  void takeCpu(Entry& entry, Listing& listing, const Sample& sample, const Fields& fields);
  void takePss(Entry& entry, Listing& listing, const Sample& sample, const Fields& fields);
  static void addToName(NameTable::Entry& name, Listing& listing, std::size_t which, double value);
  void sumNames(Listing& listing, std::size_t which);
  void saveRoom();

  ProcessFilter& filter_;
  std::size_t envelopes_;
  bool followMoments_;
  Table table_;
  std::array<Listing, 2> listings_;
  NameTable nameTable_;
};

}  // namespace runs
