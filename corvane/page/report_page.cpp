#include "report_page.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>

#include "facts.h"
#include "page_text.h"
#include "show_json.h"

namespace {

using Json = nlohmann::ordered_json;

/// JSON that cannot end the element it stands in; bytes that are no UTF-8 become U+FFFD.
template <class AnyJson>
std::string inertText(const AnyJson& json) {
  std::string text = json.dump(-1, ' ', false, AnyJson::error_handler_t::replace);
  for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos;)
    text.replace(at, 1, "\\u003c");
  return text;
}

void appendItem(std::string& list, std::string_view item) {
  if (!list.empty()) list += ',';
  list += item;
}

const char* wordOf(runs::Meaning meaning) {
  switch (meaning) {
    case runs::Meaning::state:
      return "state";
    case runs::Meaning::ofPeriod:
      return "ofPeriod";
    case runs::Meaning::amount:
      return "amount";
  }
  return "state";
}

Json packSamples(std::span<const runs::Envelope::Sample> samples, SampleArrays& arrays) {
  std::vector<double> times, values;
  for (const auto& [time, value] : samples) {
    times.push_back(time);
    values.push_back(value);
  }
  return {{"time", arrays.addTimes(times)}, {"high", arrays.addValues(values)}};
}

/// Only buckets with samples; their ends are told where they are not all in a row.
Json packBuckets(const runs::Envelope& envelope, SampleArrays& arrays) {
  const double width = envelope.bucketSeconds();
  std::vector<double> ends, low, mean, high;
  double end = envelope.firstBucket();
  for (const auto& bucket : envelope.buckets()) {
    end += width;
    if (bucket.count == 0) continue;
    ends.push_back(end);
    low.push_back(bucket.min);
    mean.push_back(bucket.sum / bucket.count);
    high.push_back(bucket.max);
  }
  Json packed{{"from", envelope.firstBucket()}, {"step", width}};
  if (ends.size() < envelope.buckets().size()) packed["time"] = arrays.addTimes(ends);
  packed["low"] = arrays.addValues(low);
  packed["mean"] = arrays.addValues(mean);
  packed["high"] = arrays.addValues(high);
  return packed;
}

/// Null where there is nothing to draw: without samples, or where all are 0.
Json packSeries(const runs::Envelope& envelope, SampleArrays& arrays) {
  const auto nothing = [](const auto& sample) { return sample.value == 0; };
  const auto empty = [](const auto& bucket) { return bucket.min == 0 && bucket.max == 0; };
  if (std::ranges::all_of(envelope.samples(), nothing) &&
      std::ranges::all_of(envelope.buckets(), empty))
    return nullptr;
  return envelope.exact() ? packSamples(envelope.samples(), arrays) : packBuckets(envelope, arrays);
}

/// The stretches in which anything ran, by their ends; who ran then, by places in a list of people.
Json packMoments(const runs::Moments& moments, SampleArrays& arrays) {
  std::vector<double> ends, seconds, shares, peaks;
  std::vector<std::uint32_t> first, who;
  std::map<std::pair<int, std::string>, std::uint32_t> places;
  Json people = Json::array();
  for (const auto& stretch : moments.stretches()) {
    if (stretch.seconds <= 0) continue;
    seconds.push_back(stretch.seconds);
    ends.push_back(stretch.end);
    first.push_back(std::uint32_t(who.size()));
    for (const auto& use : stretch.uses) {
      const auto [place, isNew] =
          places.try_emplace({use.pid, use.name}, std::uint32_t(places.size()));
      if (isNew) people.push_back({use.pid, use.name});
      who.push_back(place->second);
      shares.push_back(100 * use.cpuSeconds / stretch.seconds);
      peaks.push_back(100 * use.peak);
    }
  }
  return {{"step", moments.stretchSeconds()},     {"end", arrays.addTimes(ends)},
          {"seconds", arrays.addValues(seconds)}, {"first", arrays.addCounts(first)},
          {"who", arrays.addCounts(who)},         {"share", arrays.addValues(shares)},
          {"peak", arrays.addValues(peaks)},      {"people", std::move(people)}};
}

void addProcessSeries(Json& shown, const std::vector<runs::Process>& processes,
                      SampleArrays& arrays) {
  for (std::size_t i = 0; i < processes.size(); ++i) {
    shown[i]["cpu"] = packSeries(processes[i].cpuEnvelope, arrays);
    shown[i]["pss"] = packSeries(processes[i].pssEnvelope, arrays);
  }
}

}  // namespace

ReportPage::ReportPage(Put put) : put_(std::move(put)), samples_(put_) {
  put_(pageText.begin);
}

void ReportPage::add(const runs::RunSummary& run, const std::string& label,
                     std::optional<int> side) {
  Json shown = Json::parse(showJson(run));
  shown["label"] = label;
  shown["side"] = side ? Json(*side) : Json();
  shown["ends"] = {run.first, run.last};
  for (std::size_t i = 0; i < run.metrics.size(); ++i) {
    shown["metrics"][i]["meaning"] = wordOf(run.metrics[i].meaning);
    shown["metrics"][i]["series"] = packSeries(run.metrics[i].envelope, samples_);
  }
  addProcessSeries(shown["processes"], run.processes, samples_);
  for (std::size_t i = 0; i < run.processes.size(); ++i)
    shown["processes"][i]["alive"] = run.processes[i].alive;
  addProcessSeries(shown["names"], run.names, samples_);
  shown["moments"] = packMoments(run.moments, samples_);
  shown["about"] = factsOf(run.metadata);
  shown["notes"] = run.notes;
  appendItem(runs_, inertText(shown));
}

void ReportPage::addTable(const nlohmann::json& table) {
  appendItem(tables_, inertText(table));
}

void ReportPage::setPart(const runs::Selection& part) {
  const bool isWhole = part.from <= 0 && std::isinf(part.to);
  if (isWhole && part.processes.empty()) return;
  const Json seconds =
      isWhole ? Json() : Json{part.from, std::isinf(part.to) ? Json() : Json(part.to)};
  part_ = inertText(Json{{"seconds", seconds}, {"processes", part.processes}});
}

void ReportPage::finish() {
  samples_.finish();
  put_(pageText.middle);
  put_("{\"program\":\"corvane " CORVANE_VERSION "\",\"runs\":[");
  put_(runs_);
  put_("],\"tables\":[");
  put_(tables_);
  put_("],\"part\":");
  put_(part_);
  put_("}");
  put_(pageText.end);
}
