#include "conditions.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

constexpr std::string_view processPrefix = "process:";

struct Alias {
  std::string_view said, word;
};
constexpr Alias sourceAliases[] = {
    {"memory", "mem"}, {"disk", "io"}, {"network", "net"}, {"process", "proc"}};

std::string sourceWord(std::string_view said) {
  for (const auto& alias : sourceAliases) {
    if (alias.said == said) return std::string(alias.word);
  }
  return std::string(said);
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Takes what follows the last point off.
std::string cutLast(std::string_view& text) {
  const auto point = text.rfind('.');
  if (point == text.npos) return {};
  const auto last = text.substr(point + 1);
  text = text.substr(0, point);
  return std::string(last);
}

/// Names hold points themselves, so a target is read from its end.
bool readTarget(std::string_view target, Condition& condition) {
  condition.statistic = cutLast(target);
  condition.metric = cutLast(target);
  if (target.starts_with(processPrefix)) {
    condition.source = "process";
    condition.entity = target.substr(processPrefix.size());
    return !condition.entity.empty() && !condition.metric.empty();
  }
  const auto point = target.find('.');
  condition.source = sourceWord(target.substr(0, point));
  if (point != target.npos) condition.entity = target.substr(point + 1);
  return !condition.source.empty() && !condition.metric.empty();
}

/// In the units of the files: KB, MB/s, %.
bool readUnit(std::string_view unit, Condition& condition) {
  struct Scale {
    std::string_view name, of;
    double factor;
  };
  constexpr Scale scales[] = {{"", "", 1},
                              {"points", "%", 1},
                              {"KB", "KB", 1},
                              {"MB", "KB", 1024},
                              {"GB", "KB", 1 << 20},
                              {"MB/s", "MB/s", 1},
                              {"KB/s", "MB/s", 1.0 / 1024},
                              {"GB/s", "MB/s", 1024},
                              {"MHz", "MHz", 1},
                              {"Hz", "Hz", 1},
                              {"s", "s", 1}};
  if (unit == "%") {
    condition.relative = true;
    return true;
  }
  for (const auto& scale : scales) {
    if (scale.name != unit) continue;
    condition.change *= scale.factor;
    condition.unit = scale.of;
    return true;
  }
  return false;
}

bool readChange(std::string_view text, Condition& condition, std::string& problem) {
  if (!text.starts_with('+') && !text.starts_with('-')) {
    problem = R"(a change begins with + or -, as in "> +5%" or "> +10MB")";
    return false;
  }
  const std::string number(text);
  char* end = nullptr;
  condition.change = std::strtod(number.c_str(), &end);
  if (end == number.c_str()) {
    problem = "no number in the change";
    return false;
  }
  if (readUnit(trimmed(end), condition)) return true;
  problem = "unknown unit; there are %, points, KB, MB, GB, KB/s, MB/s, GB/s, MHz, Hz, s";
  return false;
}

std::optional<double> statisticOf(const runs::Statistics& statistics, std::string_view name) {
  if (name == "mean") return statistics.mean();
  if (name == "min") return statistics.min();
  if (name == "max") return statistics.max();
  if (name == "p50") return statistics.quantile(0.50);
  if (name == "p95") return statistics.quantile(0.95);
  if (name == "p99") return statistics.quantile(0.99);
  return std::nullopt;
}

double meanOver(const runs::Envelope& envelope, double samples) {
  double sum = 0;
  for (const auto& sample : envelope.samples())
    sum += sample.value;
  for (const auto& bucket : envelope.buckets())
    sum += bucket.sum;
  return samples == 0 ? 0 : sum / samples;
}

std::optional<double> processStatistic(const runs::Process& process, double samples,
                                       const Condition& condition) {
  const std::string_view name = condition.statistic;
  if (condition.metric == "cpu") {
    if (name == "mean") return samples == 0 ? 0 : process.cpu.sum / samples;
    if (name == "max") return process.cpu.max;
    if (name == "seconds") return process.cpuSeconds;
  } else {
    if (name == "mean") return meanOver(process.pssEnvelope, samples);
    if (name == "max") return process.pss.peak;
    if (name == "first") return process.pss.first;
    if (name == "last") return process.pss.last;
    if (name == "growth") return process.pss.growth();
  }
  return std::nullopt;
}

std::optional<double> valueOfName(const runs::RunSummary& run, const Condition& condition) {
  const std::string_view word = condition.metric == "cpu"   ? "proc"
                                : condition.metric == "pss" ? "procmem"
                                                            : "";
  const auto source = std::ranges::find(run.sources, word, &runs::SourceSummary::word);
  if (source == run.sources.end() || source->samples == 0) return std::nullopt;
  const auto name = std::ranges::find(run.names, condition.entity, &runs::Process::name);
  return processStatistic(name == run.names.end() ? runs::Process{} : *name,
                          double(source->samples), condition);
}

/// A core's metrics bear its name, so that it need not be said twice.
bool isMeant(const runs::MetricSeries& series, const Condition& condition) {
  if (series.source != condition.source || series.metric != condition.metric) return false;
  return series.entity == condition.entity ||
         (condition.entity.empty() && series.metric.starts_with(series.entity));
}

/// Whether a change in this unit can be one of such a metric.
bool fits(const Condition& condition, std::string_view unit) {
  return condition.unit.empty() || condition.unit == unit;
}

std::string_view unitOfName(const Condition& condition) {
  if (condition.metric == "pss") return "KB";
  return condition.statistic == "seconds" ? "s" : "%";
}

}  // namespace

bool Condition::holds(double base, double fresh) const {
  double moved = fresh - base;
  if (relative) {
    const double infinite = std::numeric_limits<double>::infinity();
    moved = base != 0   ? moved / std::abs(base) * 100
            : moved > 0 ? infinite
            : moved < 0 ? -infinite
                        : 0;
  }
  return above ? moved > change : moved < change;
}

std::optional<Condition> parseCondition(std::string_view text, std::string& problem) {
  Condition condition;
  condition.text = text;
  const auto sign = text.find_first_of("<>");
  if (sign == text.npos) {
    problem = "no > or < in it";
    return std::nullopt;
  }
  condition.above = text[sign] == '>';
  if (!readTarget(trimmed(text.substr(0, sign)), condition)) {
    problem = "what is compared is SOURCE[.ENTITY].METRIC.STATISTIC or process:NAME.pss.STATISTIC";
    return std::nullopt;
  }
  if (!readChange(trimmed(text.substr(sign + 1)), condition, problem)) return std::nullopt;
  return condition;
}

std::optional<double> valueIn(const runs::RunSummary& run, const Condition& condition) {
  if (condition.source == "process") {
    if (!fits(condition, unitOfName(condition))) return std::nullopt;
    return valueOfName(run, condition);
  }
  for (const auto& series : run.metrics) {
    if (isMeant(series, condition) && fits(condition, series.unit))
      return statisticOf(series.statistics, condition.statistic);
  }
  return std::nullopt;
}

bool isNamedIn(const runs::RunSummary& run, const Condition& condition) {
  if (condition.source != "process") return valueIn(run, condition).has_value();
  const auto named = std::ranges::find(run.names, condition.entity, &runs::Process::name);
  return named != run.names.end() && valueIn(run, condition).has_value();
}

std::vector<std::string> figureNames(const runs::RunSummary& run) {
  std::vector<std::string> names;
  for (const auto& series : run.metrics) {
    const auto entity = series.entity.empty() ? "" : series.entity + ".";
    names.push_back(series.source + "." + entity + series.metric);
  }
  for (const auto& name : run.names) {
    if (name.cpu.count != 0) names.push_back("process:" + name.name + ".cpu");
    if (name.pss.count != 0) names.push_back("process:" + name.name + ".pss");
  }
  return names;
}
