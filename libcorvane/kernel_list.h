#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

/// Follows a list of the kernel whose entries come and go, by their names: brings the entry called
/// `name` to place `i`, where it is nearly always already, or makes it there from its name. True
/// where it is new. Once every line of the kernel's list has been settled, what lies behind them
/// has vanished.
template <class Entry>
bool settle(std::vector<Entry>& entries, std::size_t i, std::string_view name) {
  const auto place = entries.begin() + std::ptrdiff_t(i);
  const auto found =
      std::find_if(place, entries.end(), [&](const Entry& entry) { return entry.name == name; });
  if (found == entries.end()) {
    entries.emplace(place, name);
    return true;
  }
  std::rotate(place, found, found + 1);
  return false;
}
