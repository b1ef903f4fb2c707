#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// Sectors of 512 bytes, since boot or in a period.
struct DiskSectors {
  std::uint64_t read = 0;
  std::uint64_t written = 0;
};

struct DiskLine {
  std::string_view name;
  DiskSectors sectors;
};

/// One line of `/proc/diskstats` (14, 18 or 20 fields by kernel); nothing where it is too short.
std::optional<DiskLine> parseDiskLine(std::string_view line);

DiskSectors diskTraffic(const DiskSectors& before, const DiskSectors& now);
