#include "series.h"

#include <vector>

#include "numbers.h"

namespace {

Series& seriesOf(SeriesMap& map, std::string_view name) {
  const auto found = map.find(name);
  return found != map.end() ? found->second : map.emplace(name, Series{}).first->second;
}

/// The rows' first one, whose fields outlive the next; empty where there is none.
std::vector<std::string> takeHeader(ResultRows& rows) {
  if (!rows.next()) return {};
  return {rows.fields().begin(), rows.fields().end()};
}

}  // namespace

SeriesMap columnSeries(ResultRows& rows) {
  SeriesMap map;
  const auto header = takeHeader(rows);
  std::vector<Series*> columns(
      header.size());  // made at the first sample: most are never looked up
  while (rows.next()) {
    const auto& fields = rows.fields();
    for (std::size_t column = 1; column < fields.size(); ++column) {
      auto& series = columns.at(column);
      if (series == nullptr) series = &seriesOf(map, header[column]);
      series->add(toSample(fields[column]));
    }
  }
  return map;
}

SeriesMap deviceSeries(ResultRows& rows) {
  SeriesMap map;
  const auto header = takeHeader(rows);
  std::string name;
  while (rows.next()) {
    const auto& fields = rows.fields();
    if (fields.size() < 2) continue;
    const auto series = [&](const std::string& metric) -> Series& {
      return seriesOf(map, name.assign(fields[1]).append(" ").append(metric));
    };
    // The bytes written go under the name of the read rate: the table has always shown them so.
    auto& read = series(header.at(2));
    auto& written = series(header.at(3));
    const float bytesRead = toSample(fields.at(2));
    const float bytesWritten = toSample(fields.at(4));
    // A row counts once for each of its fields after the first.
    for (std::size_t times = 1; times < fields.size(); ++times) {
      read.add(bytesRead);
      written.add(bytesWritten);
    }
  }
  return map;
}
