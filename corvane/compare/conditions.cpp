#include "conditions.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "difference.h"

namespace {

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

std::string_view unitOfName(const Condition& condition) {
  if (condition.metric == "pss") return "KB";
  return condition.statistic == "seconds" ? "s" : "%";
}

}  // namespace

bool Condition::holds(double base, double fresh) const {
  double moved = fresh - base;
  if (relative) {
    const double infinite = std::numeric_limits<double>::infinity();
    moved = percentChange(base, fresh).value_or(moved == 0 ? 0 : std::copysign(infinite, moved));
  }
  return above ? moved > change : moved < change;
}

std::optional<FoundFigure> valueIn(const runs::RunSummary& run, const Condition& condition) {
  std::optional<double> value;
  std::string_view unit;
  if (condition.source == "process") {
    value = valueOfName(run, condition);
    unit = unitOfName(condition);
  } else {
    const auto series = std::ranges::find_if(
        run.metrics, [&](const runs::MetricSeries& one) { return isMeant(one, condition); });
    if (series == run.metrics.end()) return std::nullopt;
    value = statisticOf(series->statistics, condition.statistic);
    unit = series->unit;
  }
  if (!value) return std::nullopt;
  return FoundFigure{.value = *value, .unit = std::string(unit)};
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
