#include "show_json.h"

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

Json sourcesOf(const runs::RunSummary& run) {
  auto list = Json::array();
  for (const auto& source : run.sources) {
    const auto period = source.period > 0 ? Json(source.period * 1000) : Json();
    list.push_back({{"source", source.word},
                    {"samples", source.samples},
                    {"expected", source.expected},
                    {"period_ms", period}});
  }
  return list;
}

Json metricsOf(const runs::RunSummary& run) {
  auto list = Json::array();
  for (const auto& series : run.metrics) {
    const auto& statistics = series.statistics;
    list.push_back(
        {{"source", series.source},
         {"entity", series.entity},
         {"metric", series.metric},
         {"unit", series.unit},
         {"count", statistics.count()},
         {"min", statistics.min()},
         {"mean", statistics.mean()},
         {"max", statistics.max()},
         {"p50", statistics.quantile(0.5)},
         {"p95", statistics.quantile(0.95)},
         {"p99", statistics.quantile(0.99)},
         {"sum", series.meaning == runs::Meaning::amount ? Json(statistics.sum()) : Json()}});
  }
  return list;
}

Json processOf(const runs::Process& process) {
  const auto cpu = [&](double value) { return process.cpu.count != 0 ? Json(value) : Json(); };
  const auto pss = [&](double value) { return process.pss.count != 0 ? Json(value) : Json(); };
  return {{"name", process.name},
          {"first", process.first},
          {"last", process.last},
          {"cpu_seconds", cpu(process.cpuSeconds)},
          {"cpu_mean", cpu(process.cpu.mean())},
          {"cpu_peak", cpu(process.cpu.max)},
          {"pss_first_kb", pss(process.pss.first)},
          {"pss_last_kb", pss(process.pss.last)},
          {"pss_peak_kb", pss(process.pss.peak)},
          {"pss_growth_kb_per_min", pss(process.pss.growthPerMinute())}};
}

Json processesOf(const std::vector<runs::Process>& processes, const char* countKey) {
  auto list = Json::array();
  for (const auto& process : processes) {
    auto object = processOf(process);
    Json first{{countKey,
                std::string_view(countKey) == "pid" ? Json(process.pid) : Json(process.processes)}};
    first.update(object);
    list.push_back(std::move(first));
  }
  return list;
}

}  // namespace

std::string showJson(const runs::RunSummary& run) {
  const auto start = run.metadata ? run.metadata->start.wallTime() : std::string();
  const Json all{{"run",
                  {{"folder", run.folder.string()},
                   {"seconds", run.last - run.first},
                   {"start", start.empty() ? Json() : Json(start)},
                   {"sources", sourcesOf(run)}}},
                 {"metrics", metricsOf(run)},
                 {"processes", processesOf(run.processes, "pid")},
                 {"names", processesOf(run.names, "processes")}};
  // Names may hold any bytes, among them what a terminal would obey.
  return all.dump(1, ' ', true, Json::error_handler_t::replace) + "\n";
}
