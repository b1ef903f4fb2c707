#include "trace_rows.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>

#include "trace_event.h"

namespace {

/// A number's decimal text, without allocation.
class Decimal {
 public:
  explicit Decimal(std::size_t number)
      : end_(std::to_chars(digits_.data(), digits_.data() + digits_.size(), number).ptr) {}
  std::string_view text() const { return {digits_.data(), end_}; }

 private:
  std::array<char, 20> digits_;
  const char* end_;
};

std::string_view keyOf(const ColumnEvents& rule, std::size_t column) {
  const auto next =
      std::ranges::find_if(rule.keys, [column](const KeyFrom& key) { return key.column > column; });
  return std::prev(next)->key;
}

struct Column {
  std::string tid;
  std::string_view key;
};

void putColumns(const Kind& kind, const ColumnEvents& rule, const std::vector<std::string>& header,
                ResultRows& rows, OutputFile& trace) {
  std::vector<Column> columns{{}};  // the first one is the time
  do {
    const auto& fields = rows.fields();
    while (columns.size() < fields.size())
      columns.push_back({std::to_string(columns.size()), keyOf(rule, columns.size())});
    for (std::size_t i = 1; i < fields.size() && !columns[i].key.empty(); ++i) {
      const std::string_view name = rule.namedByHeader ? header.at(i) : kind.name;
      putCounterEvent(trace, ",", name, fields[0], kind.pid, columns[i].tid, columns[i].key,
                      fields[i]);
    }
  } while (rows.next());
}

void putRow(const Kind& kind, const RowEvents& rule, const Fields& fields, std::string_view tid,
            OutputFile& trace) {
  const auto name = rule.nameField == 0 ? kind.name : fields[rule.nameField];
  for (const auto& [key, field] : rule.values)
    putCounterEvent(trace, ",", name, fields[0], kind.pid, tid, key, fields[field]);
}

std::string megabytes(std::string_view bytes) {
  return std::to_string(double(std::stoull(std::string(bytes))) * 0x1p-10 * 0x1p-10);
}

/// A row with its byte counts in MB. Both are known before any of its events is written.
void putConvertedRow(const Kind& kind, const RowEvents& rule, Fields fields, std::string_view tid,
                     OutputFile& trace) {
  std::vector<std::string> values;
  values.reserve(rule.values.size());
  for (const auto& value : rule.values)
    fields[value.field] = values.emplace_back(megabytes(fields.at(value.field)));
  putRow(kind, rule, fields, tid, trace);
}

/// The number of fields that a row must have.
std::size_t widthOf(const RowEvents& rule) {
  return std::ranges::max(rule.values, {}, &KeyOfField::field).field + 1;
}

void putAllRows(const Kind& kind, const RowEvents& rule, ResultRows& rows, OutputFile& trace) {
  const auto width = widthOf(rule);
  std::size_t number = 0;
  do {
    ++number;
    const auto& fields = rows.fields();
    const Decimal row(number);
    if (rule.bytesToMb) {
      putConvertedRow(kind, rule, fields, row.text(), trace);
    } else if (fields.size() < width) {
      continue;
    } else if (rule.track == Track::hashOfName) {
      const auto hash = std::hash<std::string_view>{}(fields[rule.nameField]);
      putRow(kind, rule, fields, Decimal(hash).text(), trace);
    } else {
      putRow(kind, rule, fields, rule.track == Track::row ? row.text() : fields[1], trace);
    }
  } while (rows.next());
}

}  // namespace

void putRows(const Kind& kind, const std::vector<std::string>& header, ResultRows& rows,
             OutputFile& trace) {
  if (const auto* columns = std::get_if<ColumnEvents>(&kind.events)) {
    putColumns(kind, *columns, header, rows, trace);
  } else {
    putAllRows(kind, std::get<RowEvents>(kind.events), rows, trace);
  }
}
