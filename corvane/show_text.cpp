#include "show_text.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "printable.h"

namespace {

constexpr std::size_t mostRows = 10;
constexpr std::size_t nameWidth = 26, numberWidth = 9;

/// At most eight characters.
std::string number(double value) {
  char text[32];
  const double size = std::fabs(value);
  const auto* const format = size < 99'999 ? "%.2f" : size < 99'999'999 ? "%.0f" : "%.2g";
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string right(const std::string& text, std::size_t width) {
  return std::string(width > text.size() ? width - text.size() : 1, ' ') + text;
}

class Page {
 public:
  explicit Page(bool colour) : colour_(colour) {}

  void heading(const std::string& first, std::initializer_list<const char*> columns) {
    std::string line = printable(first, nameWidth);
    for (const auto* column : columns)
      line += right(column, numberWidth);
    text += "\n" + (colour_ ? "\033[1m" + line + "\033[0m" : line) + "\n";
  }

  void row(const std::string& name, const std::vector<std::string>& cells) {
    text += printable(name, nameWidth);
    for (const auto& cell : cells)
      text += right(cell, numberWidth);
    text += '\n';
  }

  std::string text;

 private:
  bool colour_;
};

std::string sourceText(const runs::SourceSummary& source) {
  auto text = source.word + " " + std::to_string(source.samples);
  if (source.expected != source.samples) text += " of " + std::to_string(source.expected);
  return text;
}

/// "cpu 20, proc 19 of 20": samples, where some are missing against the period.
void addSources(Page& page, const runs::RunSummary& run) {
  std::string line = "samples:";
  for (const auto& source : run.sources) {
    const auto text = " " + sourceText(source) + (&source == &run.sources.back() ? "" : ",");
    if (line.size() + text.size() > 79) {
      page.text += line + "\n";
      line = "        ";
    }
    line += text;
  }
  page.text += printable(line) + "\n";
}

void addHead(Page& page, const runs::RunSummary& run) {
  page.text += printable(run.folder.string()) + ": " + number(run.last - run.first) + " s";
  const auto start = run.metadata ? run.metadata->start.wallTime() : std::string();
  if (!start.empty()) page.text += " from " + start;
  page.text += "\n";
  addSources(page, run);
}

bool isZero(const runs::MetricSeries& series) {
  return series.statistics.min() == 0 && series.statistics.max() == 0;
}

void addMetric(Page& page, const runs::MetricSeries& series) {
  const auto& statistics = series.statistics;
  const auto unit = series.unit.empty() ? "" : " " + series.unit;
  const auto entity = series.entity.empty() ? "" : series.entity + " ";
  page.row("  " + entity + series.metric + unit,
           {number(statistics.min()), number(statistics.mean()), number(statistics.quantile(0.5)),
            number(statistics.quantile(0.95)), number(statistics.quantile(0.99)),
            number(statistics.max())});
}

/// What is shown of a source: the machine's own metrics; of devices their traffic.
bool isShown(const runs::MetricSeries& series, const std::string& word) {
  return series.source == word && !isZero(series) &&
         (series.entity.empty() || series.unit == "MB/s");
}

void addMetrics(Page& page, const runs::RunSummary& run) {
  std::string zeros;
  for (const auto& source : run.sources) {
    const auto shown = [&](const runs::MetricSeries& series) {
      return isShown(series, source.word);
    };
    const auto any = std::ranges::any_of(run.metrics, shown);
    const auto has = std::ranges::any_of(run.metrics, [&](const runs::MetricSeries& series) {
      return series.source == source.word;
    });
    if (has && !any) zeros += (zeros.empty() ? "" : ", ") + source.word;
    if (!any) continue;
    page.heading(source.title, {"min", "mean", "p50", "p95", "p99", "max"});
    for (const auto& series : run.metrics) {
      if (shown(series)) addMetric(page, series);
    }
  }
  if (!zeros.empty()) page.text += "\nzero throughout: " + printable(zeros) + "\n";
}

using Processes = std::vector<const runs::Process*>;

/// The first ten by a rank above 0 among those that are meant.
template <class Rank>
Processes topBy(const std::vector<runs::Process>& all, Rank rank) {
  Processes top;
  for (const auto& process : all) {
    if (rank(process) > 0) top.push_back(&process);
  }
  std::ranges::stable_sort(top, std::greater{},
                           [&](const runs::Process* process) { return rank(*process); });
  if (top.size() > mostRows) top.resize(mostRows);
  return top;
}

std::string countOf(const runs::Process& process, bool byName) {
  return std::to_string(byName ? process.processes : std::uint64_t(process.pid));
}

std::string megabytes(double kilobytes) {
  return number(kilobytes / 1024);
}

void addCpu(Page& page, const std::vector<runs::Process>& processes, bool byName) {
  const auto top = topBy(processes, [&](const runs::Process& process) {
    return byName && process.processes < 2 ? 0 : process.cpuSeconds;
  });
  if (top.empty()) return;
  page.heading(byName ? "Processor time by name" : "Processor time",
               {byName ? "number" : "PID", "seconds", "mean %", "peak %", "from s", "to s"});
  for (const auto* process : top) {
    page.row("  " + process->name,
             {countOf(*process, byName), number(process->cpuSeconds), number(process->cpu.mean()),
              number(process->cpu.max), number(process->first), number(process->last)});
  }
}

void addMemory(Page& page, const std::vector<runs::Process>& processes, bool byName) {
  const auto top = topBy(processes, [&](const runs::Process& process) {
    return byName && process.processes < 2 ? 0 : process.pss.peak;
  });
  if (top.empty()) return;
  page.heading(byName ? "Memory (PSS, MB) by name" : "Memory (PSS, MB)",
               {byName ? "number" : "PID", "first", "last", "peak", "per min"});
  for (const auto* process : top) {
    page.row("  " + process->name, {countOf(*process, byName), megabytes(process->pss.first),
                                    megabytes(process->pss.last), megabytes(process->pss.peak),
                                    megabytes(process->pss.growthPerMinute())});
  }
}

}  // namespace

std::string showText(const runs::RunSummary& run, bool colour) {
  Page page(colour);
  addHead(page, run);
  addMetrics(page, run);
  addCpu(page, run.processes, false);
  addCpu(page, run.names, true);
  addMemory(page, run.processes, false);
  addMemory(page, run.names, true);
  return page.text;
}
