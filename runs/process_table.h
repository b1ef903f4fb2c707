#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace runs {

/// The PID of a row; nothing where the field is none.
inline std::optional<int> pidOf(std::string_view field) {
  int pid = 0;
  const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), pid);
  if (error != std::errc() || end != field.data() + field.size()) return std::nullopt;
  return pid;
}

/// The living processes by PID, in a flat table. A sample lists nearly the same processes in the
/// same order as the one before, so that the entry behind the last one found is tried first.
template <class Entry>
class ProcessTable {
 public:
  using Index = std::uint32_t;
  static constexpr Index none = ~Index{0};

  /// The order in which a source lists the processes.
  struct Order {
    std::vector<Index> before, now;  // in the sample before, in this one
    std::size_t next = 0;
  };

  Entry& operator[](Index index) { return entries_[index].entry; }

  /// The entry of this PID, or `none`.
  Index find(int pid, Order& order) const {
    // Where the order is that of the PIDs, those passed over have ended.
    while (order.next < order.before.size()) {
      const auto index = order.before[order.next];
      const int there = entries_[index].pid;
      if (there == pid) {
        ++order.next;
        return index;
      }
      if (there > pid) break;
      ++order.next;
    }
    const auto found = byPid_.find(pid);
    return found == byPid_.end() ? none : found->second;
  }

  /// An entry for a PID that has none.
  Index add(int pid) {
    Index index = none;
    if (free_.empty()) {
      index = Index(entries_.size());
      entries_.emplace_back();
    } else {
      index = free_.back();
      free_.pop_back();
    }
    entries_[index].pid = pid;
    byPid_[pid] = index;
    return index;
  }

  /// Takes the entry out.
  Entry take(Index index) {
    Slot taken;
    std::swap(taken, entries_[index]);
    byPid_.erase(taken.pid);
    free_.push_back(index);
    return std::move(taken.entry);
  }

  std::vector<Index> all() const {
    std::vector<Index> indices;
    indices.reserve(byPid_.size());
    for (const auto& [pid, index] : byPid_)
      indices.push_back(index);
    return indices;
  }

 private:
  static constexpr int noPid = -1;
  struct Slot {
    int pid = noPid;
    Entry entry;
  };

  std::vector<Slot> entries_;
  std::vector<Index> free_;
  std::unordered_map<int, Index> byPid_;
};

}  // namespace runs
