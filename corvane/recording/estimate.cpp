#include "estimate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <sys/statvfs.h>

#include "message.h"

namespace {

/// A sample's bytes: the widths of a row's columns with its end, times the rows, and what is there
/// once (docs/result-files.md).
struct Size {
  std::string_view word;
  int once, each;
};

constexpr std::array sizes{Size{"cpu", 51, 30},  Size{"gpu", 105, 0}, Size{"adsp", 47, 0},
                           Size{"cdsp", 47, 0},  Size{"ddr", 131, 0}, Size{"mem", 181, 0},
                           Size{"proc", 2, 151}, Size{"io", 1, 121},  Size{"procmem", 2, 241},
                           Size{"net", 1, 181}};
constexpr Size gaugeSize{"", 21, 20};

int countOf(const std::vector<SourceState>& sources, std::string_view word) {
  const auto found = std::ranges::find(sources, word, &SourceState::word);
  return found == sources.end() ? 0 : found->count;
}

std::string megabytes(double bytes) {
  std::array<char, 32> text{};
  const bool large = bytes >= 0x1p30;
  std::snprintf(text.data(), text.size(), large ? "%.1f GB" : "%.0f MB",
                std::ceil(bytes / (large ? 0x1p30 / 10 : 0x1p20)) / (large ? 10 : 1));
  return text.data();
}

std::string hours(double number) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), number < 2 ? "%.0f minutes" : "%.0f hours",
                number < 2 ? number * 60 : number);
  return text.data();
}

}  // namespace

double bytesPerHour(const Plan& plan, const std::vector<SourceState>& sources) {
  constexpr double millisecondsPerHour = 3.6e6;
  double bytes = 0;
  for (const auto& source : sources) {
    const auto known = std::ranges::find(sizes, source.word, &Size::word);
    const auto& size = known == sizes.end() ? gaugeSize : *known;
    // Who is not counted without an effort is counted elsewhere.
    const int count =
        source.word == "procmem" && source.count == 0 ? countOf(sources, "proc") : source.count;
    bytes += (size.once + double(size.each) * count) * millisecondsPerHour /
             double(plan.periodOf(source.word).count());
  }
  return bytes;
}

void warnOfFullDisk(const Plan& plan, const std::vector<SourceState>& sources) {
  struct statvfs disk{};
  if (::statvfs(plan.output.c_str(), &disk) != 0) return;
  const double free = double(disk.f_bavail) * double(disk.f_frsize);
  const double hourly = bytesPerHour(plan, sources);
  const double limit =
      plan.limit ? std::chrono::duration<double, std::ratio<3600>>(*plan.limit).count() : 24;
  if (hourly * limit <= free) return;
  const int processes = std::max(countOf(sources, "proc"), countOf(sources, "procmem"));
  message("the disk will be full in about " + hours(free / hourly) + ": about " +
          megabytes(hourly) + " an hour" +
          (processes > 0
               ? " with " + std::to_string(processes) + (processes == 1 ? " process" : " processes")
               : "") +
          ", " + megabytes(free) + " free in " + plan.output.string());
}
