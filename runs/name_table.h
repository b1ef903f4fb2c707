#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "processes.h"

namespace runs {

/// What all processes of one name use together. Names whose processes have all ended are kept as
/// long as they are few, then those that used most.
class NameTable {
 public:
  /// Ended names are cut back to the first `mostEnded / 4` by processor time and as many by memory
  /// when there are more than this.
  static constexpr std::size_t mostEnded = 1024;

  /// With envelopes of this capacity.
  explicit NameTable(std::size_t envelopes) : envelopes_(envelopes) {}

  struct Entry {
    Process sum;
    std::uint64_t living = 0;
    // Of the sample that is being read, per listing.
    std::array<double, 2> now{};
    std::array<std::uint64_t, 2> sample{};
  };

  /// The entry of a name that gets one more living process. It stays where it is until that has
  /// left it.
  Entry& enter(const std::string& name, double time);
  /// A process will not have this name any more.
  void leave(Entry& entry);

  template <class Visit>
  void forEach(Visit visit) {
    for (auto& [name, entry] : entries_)
      visit(entry->sum);
  }

  /// All names, with most processor time first.
  std::vector<Process> take();
  std::uint64_t dropped() const { return dropped_; }

 private:
  void prune();

  std::unordered_map<std::string, std::unique_ptr<Entry>> entries_;
  std::size_t envelopes_;
  std::size_t ended_ = 0;
  std::uint64_t dropped_ = 0;
};

}  // namespace runs
