#pragma once

#include <atomic>
#include <utility>

/// Makes a monitor that is never destroyed: a library may be using it for as long as the process
/// lives. It stays reachable, so that a leak checker knows that this is meant.
template <class Monitor, class... Arguments>
Monitor& keptMonitor(Arguments&&... arguments) {
  struct Kept {
    Monitor monitor;
    Kept* next = nullptr;
    explicit Kept(Arguments&&... a) : monitor(std::forward<Arguments>(a)...) {}
  };
  static std::atomic<Kept*> all{nullptr};
  auto* kept = new Kept(std::forward<Arguments>(arguments)...);
  kept->next = all.exchange(kept);
  return kept->monitor;
}
