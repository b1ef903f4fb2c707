#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "fields.h"

// What the columns of the result files mean. Everything that shows a number goes by this.

namespace runs {

enum class Meaning {
  state,     // as it was at the sample's time
  ofPeriod,  // the mean over the period before the sample's time
  amount,    // a quantity in the period before the sample's time
};

/// One column of a result file that is a metric.
struct Column {
  std::size_t field = 0;  // its place in a row
  std::string entity;  // what it is of where the rows do not say that: "cpu3"; empty: the machine
  std::string metric;  // the file's column name without the unit in brackets, or the rate's name
  std::string unit;    // as shown: %, KB, MB/s, MHz, ...; empty: a count
  Meaning meaning = Meaning::state;
  std::string pair;   // two columns of one pair are drawn together: "disk", "network"; empty: alone
  bool drawn = true;  // over time; times since a process began are not
  bool bytes = false;  // the file has bytes of the period: shown as MB/s over the real period
};

enum class RowsOf {
  machine,    // a row a sample
  devices,    // a row for each device or interface, which a field names
  processes,  // a row for each process
};

/// A result file's kind, with the columns of the file at hand.
struct Source {
  std::string
      word;  // the option's word: cpu gpu adsp cdsp ddr mem proc io procmem net, or the file's
  std::string title;  // for people: "Processor", "Memory", ...
  RowsOf rows = RowsOf::machine;
  std::size_t width = 0;      // fields of a row
  std::size_t nameField = 0;  // devices and processes
  std::size_t pidField = 0;   // processes
  std::vector<Column> columns;

  /// The column of this metric; null where the file has none.
  const Column* find(std::string_view metric) const;
};

/// The kind of the files that begin with `prefix` ("cpu", "procmem-") and have this header. A kind
/// that nobody here knows is read by its header.
Source sourceOf(std::string_view prefix, const Fields& header);

/// Where a source stands in any list of them: in the order of the options, unknown ones behind.
std::size_t placeOf(std::string_view word);

}  // namespace runs
