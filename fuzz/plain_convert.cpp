#include "plain_convert.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <stdexcept>

#include "toJson.h"

namespace plain {

Row split(const std::string& line) {
  Row fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, ' ');)
    if (!field.empty()) fields.push_back(field);
  return fields;
}

Table traceTable(const std::string& content) {
  Table table;
  std::istringstream stream(content);
  std::string line;
  while (!stream.fail() && !stream.bad()) {
    std::getline(stream, line);
    if (!line.empty()) table.push_back(split(line));
  }
  return table;
}

Table csvTable(const std::string& content, int& emptyLines) {
  Table table;
  std::istringstream stream(content);
  for (std::string line; std::getline(stream, line);) {
    if (line.empty()) {
      ++emptyLines;
    } else {
      table.push_back(split(line));
    }
  }
  return table;
}

Table summaryTable(const std::string& content) {
  int emptyLines = 0;
  return csvTable(content, emptyLines);
}

std::optional<float> number(const std::string& field) {
  char* end = nullptr;
  errno = 0;
  const float value = std::strtof(field.c_str(), &end);
  return end == field.c_str() || errno == ERANGE ? std::nullopt : std::optional(value);
}

std::string csvField(const std::string& field) {
  const auto value = number(field);
  if (!value) return field;
  char text[64];
  std::snprintf(text, sizeof text, "%.2f", double(*value));
  return text;
}

float sample(const std::string& field) {
  return float(std::atof(field.c_str()));
}

std::string csv(const Table& table) {
  std::string text;
  for (const auto& row : table) {
    for (std::size_t i = 0; i < row.size(); ++i)
      text += (i == 0 ? "" : ",") + csvField(row[i]);
    text += "\n";
  }
  return text;
}

namespace {

std::string columnKey(SYSIP kind, std::size_t column) {
  const auto at = [column](const Row& keys) {
    return column <= keys.size() ? keys[column - 1] : "";
  };
  switch (kind) {
    case CPU_STATS:
      return column < 10 ? "load" : "frequency";
    case GPU_STATS:
      return column == 1 ? "Frequency" : "Utilization";
    case THERMAL_STATS:
      return "Temp(deg C)";
    case DDR_STATS:
      return at({"LLCC Total", "LLCC Read", "LLCC Write", "CABO Total", "CABO Read", "CABO Write"});
    default:
      return at({"Frequency", "Load", "HVX Utilization", "HMX Utilization"});
  }
}

const std::map<SYSIP, Row>& pidTidAndName() {
  static const std::map<SYSIP, Row> map{
      {CPU_STATS, {"10", "12", "CPU"}},        {GPU_STATS, {"11", "5", "GPU"}},
      {ADSP_STATS, {"12", "5", "ADSP"}},       {CDSP_STATS, {"13", "5", "CDSP"}},
      {CDSP1_STATS, {"14", "5", "CDSP1"}},     {DDR_STATS, {"15", "8", "DDR"}},
      {MEM_STATS, {"16", "0", "MEM"}},         {PROC_STATS, {"17", "0", "PROC"}},
      {DISKIO_STATS, {"18", "0", "DISKIO"}},   {THERMAL_STATS, {"19", "0", "THERMAL"}},
      {PROCMEM_STATS, {"20", "0", "PROCMEM"}}, {NET_STATS, {"21", "12", "NET"}}};
  return map;
}

std::string megabytes(const std::string& bytes) {
  return std::to_string(double(std::stoull(bytes)) * 0.0009765625 * 0.0009765625);
}

void addRow(const Row& row, std::size_t number, SYSIP kind, const Row& header,
            std::string& events) {
  const auto& names = pidTidAndName().at(kind);
  const auto add = [&](const std::string& name, const std::string& tid, const std::string& key,
                       const std::string& value) {
    events += createCounterEvent(name, row.at(0), names[0], tid, key, value, 1);
  };
  const auto index = std::to_string(number);
  switch (kind) {
    case MEM_STATS:
      if (row.size() > 4) add("MEM", index, "  Mem Usage(%)", row[4]);
      break;
    case PROC_STATS:
      if (row.size() > 6) add(row[2], row[1], " Total CPU%", row[6]);
      break;
    case DISKIO_STATS: {
      if (row.size() < 6) break;
      const auto hash = std::to_string(std::hash<std::string>{}(row[1]));
      add(row[1], hash, "  KB_read/s", row[3]);
      add(row[1], hash, "  KB_write/s", row[5]);
      break;
    }
    case PROCMEM_STATS:
      for (std::size_t i = 4; i < 8 && row.size() > 7; ++i)
        add(row[3], row[1], Row{" VSS", " PSS", " RSS", " USS"}[i - 4], row[i]);
      break;
    case NET_STATS: {
      const auto sent = megabytes(row.at(3)), received = megabytes(row.at(4));
      add(row[1], index, "Tx_bw(MB)", sent);
      add(row[1], index, "Rx_bw(MB)", received);
      break;
    }
    default:
      for (std::size_t i = 1; i < row.size(); ++i) {
        const bool named = kind == CPU_STATS || kind == THERMAL_STATS;
        const auto key = columnKey(kind, i);
        if (!key.empty()) add(named ? header.at(i) : names[2], std::to_string(i), key, row[i]);
      }
  }
}

}  // namespace

void addEvents(const Table& table, SYSIP kind, std::string& events) {
  if (table.size() < 2) return;
  const auto& names = pidTidAndName().at(kind);
  events += createMetadata("process_name", table[1].at(0), names[0], names[1], "name",
                           names[2] + "_STATS");
  for (std::size_t i = 1; i < table.size(); ++i)
    addRow(table[i], i, kind, table[0], events);
}

std::vector<Summary> summary(const Table& table, SYSIP kind) {
  static const std::map<SYSIP, std::string> prefixes{
      {CPU_STATS, ""},     {GPU_STATS, "GPU "}, {ADSP_STATS, "ADSP "},    {CDSP_STATS, "CDSP "},
      {DDR_STATS, "DDR "}, {MEM_STATS, "MEM "}, {DISKIO_STATS, "Diskio "}};
  std::map<std::string, std::vector<float>> series;
  for (std::size_t r = 1; r < table.size(); ++r) {
    const auto& row = table[r];
    for (std::size_t i = 1; i < row.size(); ++i) {
      if (kind == DISKIO_STATS) {
        series[row[1] + " " + table[0].at(2)].push_back(sample(row.at(2)));
        series[row[1] + " " + table[0].at(3)].push_back(sample(row.at(4)));
      } else {
        series[table[0].at(i)].push_back(sample(row[i]));
      }
    }
  }
  std::vector<Summary> rows;
  for (const auto& [name, samples] : series) {
    double sum = 0;
    for (const auto value : samples)
      sum += double(value);
    rows.push_back({.name = prefixes.at(kind) + name,
                    .min = *std::ranges::min_element(samples),
                    .max = *std::ranges::max_element(samples),
                    .avg = float(sum) / float(samples.size())});
  }
  return rows;
}

}  // namespace plain
