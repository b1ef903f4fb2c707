#include "sources.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <span>

namespace runs {

namespace {

enum class Use { value, bytes, listed, none };

/// What a header's field stands for, where the field does not say it all.
struct ColumnRule {
  std::string_view header;
  std::string_view metric, unit;
  Meaning meaning = Meaning::state;
  std::string_view pair = "";
  Use use = Use::value;
};

struct SourceRule {
  std::string_view prefix, word, title;
  RowsOf rows = RowsOf::machine;
  std::string_view nameHeader = "", pidHeader = "";
  std::span<const ColumnRule> columns = {};
};

constexpr std::array cpuColumns{ColumnRule{"TotalCPU", "TotalCPU", "%", Meaning::ofPeriod}};
constexpr std::array gpuColumns{
    ColumnRule{"GPUReadBW(MB/s)", "GPUReadBW", "MB/s", Meaning::ofPeriod, "bandwidth"},
    ColumnRule{"GPUWriteBW(MB/s)", "GPUWriteBW", "MB/s", Meaning::ofPeriod, "bandwidth"}};
constexpr std::array ddrColumns{
    ColumnRule{"llcc_rd(MB/s)", "llcc_rd", "MB/s", Meaning::ofPeriod, "llcc"},
    ColumnRule{"llcc_wr(MB/s)", "llcc_wr", "MB/s", Meaning::ofPeriod, "llcc"},
    ColumnRule{"cabo_rd(MB/s)", "cabo_rd", "MB/s", Meaning::ofPeriod, "cabo"},
    ColumnRule{"cabo_wr(MB/s)", "cabo_wr", "MB/s", Meaning::ofPeriod, "cabo"}};
// Memory's percentages are of this moment, not of a period.
constexpr std::array memColumns{ColumnRule{"Mem_Usage(%)", "Mem_Usage", "%", Meaning::state},
                                ColumnRule{"Swap_Used(%)", "Swap_Used", "%", Meaning::state}};
constexpr std::array procColumns{
    ColumnRule{"UserTime", "UserTime", "s", Meaning::state, "", Use::listed},
    ColumnRule{"SystemTime", "SystemTime", "s", Meaning::state, "", Use::listed},
    ColumnRule{"TotalTime", "TotalTime", "s", Meaning::state, "", Use::listed},
    ColumnRule{"CPU_Usage(%)", "CPU_Usage", "%", Meaning::ofPeriod}};
// The file's own rates are by the nominal period, and whole: the bytes tell more.
constexpr std::array ioColumns{
    ColumnRule{"Bytes_read", "read", "MB/s", Meaning::ofPeriod, "disk", Use::bytes},
    ColumnRule{"Bytes_write", "write", "MB/s", Meaning::ofPeriod, "disk", Use::bytes},
    ColumnRule{"KB_read/s", "", "", Meaning::ofPeriod, "", Use::none},
    ColumnRule{"KB_write/s", "", "", Meaning::ofPeriod, "", Use::none}};
constexpr std::array procmemColumns{ColumnRule{"PPID", "", "", Meaning::state, "", Use::none}};
// The column of packets sent carries the bytes received once more: no packets sent are known.
constexpr std::array netColumns{
    ColumnRule{"Tx_bw(bytes)", "sent", "MB/s", Meaning::ofPeriod, "network", Use::bytes},
    ColumnRule{"Rx_bw(bytes)", "received", "MB/s", Meaning::ofPeriod, "network", Use::bytes},
    ColumnRule{"Tx_packets", "", "", Meaning::amount, "", Use::none},
    ColumnRule{"Collisions", "Collisions", "", Meaning::amount},
    ColumnRule{"Rx_packets", "Rx_packets", "", Meaning::amount},
    ColumnRule{"Tx_packets(dropped)", "Tx_packets(dropped)", "", Meaning::amount, "dropped"},
    ColumnRule{"Rx_packets(dropped)", "Rx_packets(dropped)", "", Meaning::amount, "dropped"}};

/// In the order of the options.
constexpr std::array<SourceRule, 11> rules{{
    {.prefix = "cpu", .word = "cpu", .title = "Processor", .columns = cpuColumns},
    {.prefix = "gpu", .word = "gpu", .title = "GPU", .columns = gpuColumns},
    {.prefix = "adsp", .word = "adsp", .title = "Audio DSP"},
    {.prefix = "cdsp", .word = "cdsp", .title = "Compute DSP"},
    {.prefix = "cdsp1", .word = "cdsp1", .title = "Second compute DSP"},
    {.prefix = "ddr", .word = "ddr", .title = "Memory bandwidth", .columns = ddrColumns},
    {.prefix = "mem", .word = "mem", .title = "Memory", .columns = memColumns},
    {.prefix = "proc",
     .word = "proc",
     .title = "Processes",
     .rows = RowsOf::processes,
     .nameHeader = "ProcessName",
     .pidHeader = "PID",
     .columns = procColumns},
    {.prefix = "diskio",
     .word = "io",
     .title = "Disks",
     .rows = RowsOf::devices,
     .nameHeader = "Device",
     .columns = ioColumns},
    {.prefix = "procmem-",
     .word = "procmem",
     .title = "Memory of processes",
     .rows = RowsOf::processes,
     .nameHeader = "ProcessName",
     .pidHeader = "PID",
     .columns = procmemColumns},
    {.prefix = "net",
     .word = "net",
     .title = "Network",
     .rows = RowsOf::devices,
     .nameHeader = "Network_Interface",
     .columns = netColumns},
}};

/// "cpu12" of "cpu12(%)" and "cpu12steal(%)".
std::string_view coreOf(std::string_view header) {
  if (!header.starts_with("cpu")) return {};
  std::size_t end = 3;
  while (end < header.size() && std::isdigit(static_cast<unsigned char>(header[end])) != 0)
    ++end;
  return end == 3 ? std::string_view{} : header.substr(0, end);
}

/// A column that no rule knows: its unit stands in brackets, and tells what it is.
Column columnByHeader(std::string_view header) {
  Column column;
  const auto bracket = header.rfind('(');
  const bool hasUnit = bracket != std::string_view::npos && bracket > 0 && header.ends_with(')');
  column.metric = header.substr(0, hasUnit ? bracket : header.size());
  if (hasUnit) column.unit = header.substr(bracket + 1, header.size() - bracket - 2);
  const bool ofPeriod =
      column.unit == "%" || column.unit.ends_with("/s") || column.metric.ends_with("_mean");
  column.meaning = ofPeriod ? Meaning::ofPeriod : Meaning::state;
  column.entity = coreOf(header);
  return column;
}

Column columnBy(const ColumnRule& rule) {
  return {.entity = {},
          .metric = std::string(rule.metric),
          .unit = std::string(rule.unit),
          .meaning = rule.meaning,
          .pair = std::string(rule.pair),
          .drawn = rule.use != Use::listed,
          .bytes = rule.use == Use::bytes};
}

/// The field's place, or 0 (the time's) where the header lacks it.
std::size_t fieldNamed(const Fields& header, std::string_view name) {
  const auto found = std::ranges::find(header, name);
  return name.empty() || found == header.end() ? 0 : std::size_t(found - header.begin());
}

void addColumns(Source& source, const Fields& header, const SourceRule& rule) {
  for (std::size_t field = 1; field < header.size(); ++field) {
    if (field == source.nameField || field == source.pidField) continue;
    const auto known = std::ranges::find(rule.columns, header[field], &ColumnRule::header);
    if (known != rule.columns.end() && known->use == Use::none) continue;
    auto column = known != rule.columns.end() ? columnBy(*known) : columnByHeader(header[field]);
    column.field = field;
    source.columns.push_back(std::move(column));
  }
}

}  // namespace

const Column* Source::find(std::string_view metric) const {
  const auto found = std::ranges::find(columns, metric, &Column::metric);
  return found == columns.end() ? nullptr : &*found;
}

Source sourceOf(std::string_view prefix, const Fields& header) {
  const auto known = std::ranges::find(rules, prefix, &SourceRule::prefix);
  const auto word = prefix.substr(0, prefix.find_last_not_of('-') + 1);
  const auto& rule =
      known != rules.end() ? *known : SourceRule{.prefix = prefix, .word = word, .title = word};
  Source source;
  source.word = rule.word;
  source.title = rule.title;
  source.rows = rule.rows;
  source.width = header.size();
  source.nameField = fieldNamed(header, rule.nameHeader);
  source.pidField = fieldNamed(header, rule.pidHeader);
  const bool lacksName = source.nameField == 0 && !rule.nameHeader.empty();
  const bool lacksPid = source.pidField == 0 && !rule.pidHeader.empty();
  if (lacksName || lacksPid) source.rows = RowsOf::machine;
  addColumns(source, header, rule);
  return source;
}

std::size_t placeOf(std::string_view word) {
  return std::size_t(std::ranges::find(rules, word, &SourceRule::word) - rules.begin());
}

}  // namespace runs
