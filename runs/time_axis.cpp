#include "time_axis.h"

#include <algorithm>

#include "result_reader.h"

namespace runs {

namespace {

/// Times since the start are whole microseconds; the counter's are twelfths of some hundred.
bool hasFraction(std::string_view text) {
  const auto point = text.find('.');
  return point != std::string_view::npos && text.find('e') == std::string_view::npos &&
         text.find_first_not_of('0', point + 1) != std::string_view::npos;
}

/// Where the earliest sample begins; by the files with rounded times only where all have them.
double earliestStart(const std::vector<FirstTimes>& times) {
  double earliest = -1;
  for (const bool rounded : {false, true}) {
    for (const auto& file : times) {
      const double start = std::max(0.0, file.first - (file.ofPeriod ? file.period() : 0));
      if (file.rounded == rounded && (earliest < 0 || start < earliest)) earliest = start;
    }
    if (earliest >= 0) break;
  }
  return earliest;
}

}  // namespace

std::optional<FirstTimes> firstTimes(const ResultFile& file) {
  ResultReader rows(file);
  if (!rows.next()) return std::nullopt;
  FirstTimes times;
  times.first = rows.microseconds();
  times.rounded = rows.timeText().find('e') != std::string_view::npos;
  times.counter = hasFraction(rows.timeText());
  times.ofPeriod = std::ranges::any_of(
      rows.source().columns, [](const Column& column) { return column.meaning != Meaning::state; });
  while (rows.microseconds() == times.first) {
    if (!rows.next()) return times;
  }
  times.second = rows.microseconds();
  times.counter = times.counter || hasFraction(rows.timeText());
  return times;
}

TimeAxis timeAxis(const std::vector<FirstTimes>& times, const std::optional<Metadata>& metadata) {
  // A run that has metadata was recorded with the counter's stamps, whatever these look like.
  if (!metadata && std::ranges::none_of(times, &FirstTimes::counter)) return {};
  const double earliest = earliestStart(times);
  if (!metadata) return {.zero = earliest};
  // The counter runs at the rate that the metadata know, the stamps at a nominal one.
  const double perMicrosecond = nominalMhz / metadata->counterHz;
  const TimeAxis axis{.zero = double(metadata->start.counter) / nominalMhz,
                      .secondsPerMicrosecond = perMicrosecond};
  if (axis.zero <= earliest) return axis;
  return {.zero = earliest, .secondsPerMicrosecond = perMicrosecond};
}

}  // namespace runs
