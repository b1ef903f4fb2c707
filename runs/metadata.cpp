#include "metadata.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <time.h>

#include "run_files.h"

namespace runs {

namespace {

using Json = nlohmann::ordered_json;

constexpr int schema = 1;
constexpr std::int64_t nsPerSecond = 1'000'000'000;

std::int64_t floorDivide(std::int64_t a, std::int64_t b) {
  return a / b - (a % b < 0 ? 1 : 0);
}

/// Reads what Instant::wallTime writes.
void takeWallTime(const std::string& text, Instant& instant) {
  tm utc{};
  long fraction = 0;
  char sign = 0;
  int hours = 0, minutes = 0;
  if (std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d.%9ld%c%d:%d", &utc.tm_year, &utc.tm_mon,
                  &utc.tm_mday, &utc.tm_hour, &utc.tm_min, &utc.tm_sec, &fraction, &sign, &hours,
                  &minutes) != 10)
    return;
  utc.tm_year -= 1900;
  utc.tm_mon -= 1;
  instant.zoneSeconds = (sign == '-' ? -60 : 60) * (60 * hours + minutes);
  instant.wallNs = (std::int64_t(timegm(&utc)) - instant.zoneSeconds) * nsPerSecond + fraction;
}

// The members of each structure by their names in the file and in its order, for both directions.

void eachMember(Mark& mark, auto visit) {
  visit("text", mark.text);
  visit("at", mark.at);
}

void eachMember(SourcePeriod& source, auto visit) {
  visit("source", source.source);
  visit("period_ms", source.milliseconds);
}

void eachMember(MissingSource& missing, auto visit) {
  visit("source", missing.source);
  visit("reason", missing.reason);
}

void eachMember(Processor& processor, auto visit) {
  visit("name", processor.name);
  visit("cores", processor.cores);
}

void eachMember(FrequencyPolicy& policy, auto visit) {
  visit("cores", policy.cores);
  visit("governor", policy.governor);
  visit("min_khz", policy.minKhz);
  visit("max_khz", policy.maxKhz);
}

void eachMember(Host& host, auto visit) {
  visit("name", host.name);
  visit("model", host.model);
  visit("kernel", host.kernel);
  visit("architecture", host.architecture);
  visit("cores", host.cores);
  visit("online_cores", host.onlineCores);
  visit("processors", host.processors);
  visit("frequencies", host.frequencies);
  visit("page_size", host.pageSize);
  visit("memory_kb", host.memoryKb);
  visit("android", host.android);
}

void eachMember(Ending& ending, auto visit) {
  visit("status", ending.status);
  visit("signal", ending.signal);
}

void eachMember(Command& command, auto visit) {
  visit("arguments", command.arguments);
  visit("pid", command.pid);
  eachMember(command.ending, visit);
  visit("start", command.start);
  visit("end", command.end);
}

void eachMember(Profiler& profiler, auto visit) {
  visit("path", profiler.path);
  visit("arguments", profiler.arguments);
  visit("version", profiler.version);
  visit("library", profiler.monitorLibrary);
  eachMember(profiler.ending, visit);
}

void eachMember(Metadata& metadata, auto visit) {
  visit("suffix", metadata.suffix);
  visit("start", metadata.start);
  visit("end", metadata.end);
  visit("counter_hz", metadata.counterHz);
  visit("command", metadata.command);
  visit("limit_s", metadata.limit);
  visit("sources", metadata.sources);
  visit("missing", metadata.missing);
  visit("labels", metadata.labels);
  visit("marks", metadata.marks);
  visit("notices", metadata.notices);
  visit("faults", metadata.faults);
  visit("profiler", metadata.profiler);
  visit("host", metadata.host);
}

constexpr auto noVisit = [](const char*, auto&) {};

template <class Value>
concept Structure = requires(Value& value) { eachMember(value, noVisit); };

// In a class, so that each sees the others.
struct Written {
  static Json of(Instant& instant) {
    return {{"wall", instant.wallTime()}, {"boot_s", instant.boot}, {"counter", instant.counter}};
  }
  static Json of(auto& value) { return value; }
  template <Structure Value>
  static Json of(Value& value) {
    Json json = Json::object();
    eachMember(value, [&](const char* name, auto& member) { json[name] = of(member); });
    return json;
  }
  template <class Value>
  static Json of(std::optional<Value>& value) {
    return value ? of(*value) : Json();
  }
  template <class Value>
  static Json of(std::vector<Value>& values) {
    Json json = Json::array();
    for (auto& value : values)
      json.push_back(of(value));
    return json;
  }
};

/// What is absent, null or of another type than ours leaves the value as it is.
template <class Value>
void take(const Json& json, Value& value) {
  try {
    json.get_to(value);
  } catch (const nlohmann::json::exception&) {
    return;
  }
}

template <class Value>
void take(const Json& json, const char* name, Value& value);

void take(const Json& json, Instant& instant) {
  std::string wall;
  take(json, "wall", wall);
  takeWallTime(wall, instant);
  take(json, "boot_s", instant.boot);
  take(json, "counter", instant.counter);
}

template <Structure Value>
void take(const Json& json, Value& value) {
  eachMember(value, [&](const char* name, auto& member) { take(json, name, member); });
}

template <class Value>
void take(const Json& json, std::optional<Value>& value) {
  take(json, value.emplace());
}

template <class Value>
void take(const Json& json, std::vector<Value>& values) {
  if (!json.is_array()) return;
  for (const auto& element : json)
    take(element, values.emplace_back());
}

template <class Value>
void take(const Json& json, const char* name, Value& value) {
  if (!json.is_object()) return;
  const auto found = json.find(name);
  if (found != json.end() && !found->is_null()) take(*found, value);
}

}  // namespace

std::string Instant::wallTime() const {
  if (wallNs == 0) return {};
  const auto seconds = floorDivide(wallNs, nsPerSecond);
  const auto local = time_t(seconds + zoneSeconds);
  tm parts{};
  gmtime_r(&local, &parts);
  std::array<char, 32> day{};
  strftime(day.data(), day.size(), "%Y-%m-%dT%H:%M:%S", &parts);
  const int minutes = std::abs(zoneSeconds) / 60;
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%s.%09lld%c%02d:%02d", day.data(),
                static_cast<long long>(wallNs - seconds * nsPerSecond), zoneSeconds < 0 ? '-' : '+',
                minutes / 60, minutes % 60);
  return text.data();
}

double Metadata::secondsAt(double stamp) const {
  return (stamp * nominalMhz - double(start.counter)) / counterHz;
}

double Metadata::wallAt(double stamp) const {
  return double(start.wallNs) / double(nsPerSecond) + secondsAt(stamp);
}

std::filesystem::path metadataFile(const std::filesystem::path& folder) {
  const auto plain = plainFolder(folder);
  return plain.parent_path() / (plain.filename().string() + ".run.json");
}

std::optional<Metadata> readMetadata(const std::filesystem::path& folder) {
  std::ostringstream text;
  std::ifstream file(metadataFile(folder), std::ios::binary);
  if (!file || !(text << file.rdbuf())) return std::nullopt;
  return parseMetadata(text.str());
}

std::optional<Metadata> parseMetadata(std::string_view text) {
  const auto json = Json::parse(text, nullptr, false);
  int version = 0;
  take(json, "schema", version);
  if (version != schema) return std::nullopt;
  Metadata metadata;
  take(json, metadata);
  if (metadata.counterHz <= 0) return std::nullopt;
  return metadata;
}

std::string toJson(Metadata metadata) {
  Json json = {{"schema", schema}};
  json.update(Written::of(metadata));
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace runs
