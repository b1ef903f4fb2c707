#include "trace_tracks.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "json_text.h"

namespace {

/// Bytes in MB.
constexpr double mebi = 1024.0 * 1024.0;

/// Microseconds with as many decimals as the files have.
std::string microseconds(double seconds) {
  char text[64];
  const int length = std::snprintf(text, sizeof text, "%.2f", seconds * 1e6);
  return {text, std::size_t(std::clamp(length, 0, int(sizeof text) - 1))};
}

/// Zero as the files write it: "0", "0.00".
bool isZeroText(std::string_view text) {
  return text.find_first_not_of("0.") == std::string_view::npos;
}

/// Of the sample's source.
std::uint64_t bitOf(const runs::Sample& sample) {
  return 1ULL << (sample.place % 64);
}

}  // namespace

TraceWriter::TraceWriter(runs::RunReader& run, NewFile* file, TrackSet* found, TraceLimits limits)
    : run_(run), file_(file), found_(found), limits_(limits), sources_(run.sourceCount()) {
  for (std::size_t place = 0; place < sources_.size(); ++place) {
    const auto& source = run.source(place);
    auto& state = sources_[place];
    state.groups = groupsOf(source);
    state.pid = std::to_string(place + 1);
    const auto* const total = source.find("TotalTime");
    const bool isOfProcesses = source.rows == runs::RowsOf::processes;
    state.totalField = isOfProcesses && total != nullptr ? total->field : 0;
    if (file_ == nullptr) continue;
    const auto* const comma = place == 0 ? "" : ",\n";
    file_->put(comma, R"({"ph":"M","name":"process_name","pid":)", state.pid, R"(,"args":{"name":)",
               jsonString(source.title), "}},\n");
    file_->put(R"({"ph":"M","name":"process_sort_index","pid":)", state.pid,
               R"(,"args":{"sort_index":)", state.pid, "}}");
  }
}

std::vector<TraceWriter::Group> TraceWriter::groupsOf(const runs::Source& source) {
  std::vector<Group> groups;
  for (const auto& column : source.columns) {
    if (!column.drawn) continue;
    const auto isPartner = [&](const Group& group) {
      return !column.pair.empty() && group.columns.front()->pair == column.pair;
    };
    const auto partner = std::ranges::find_if(groups, isPartner);
    if (partner != groups.end()) {
      partner->columns.push_back(&column);
      continue;
    }
    auto title = column.pair.empty() ? column.metric : column.pair;
    if (!column.unit.empty()) title += " (" + column.unit + ")";
    groups.push_back({.columns = {&column},
                      .title = std::move(title),
                      .ofPeriod = column.meaning != runs::Meaning::state});
  }
  return groups;
}

TraceWriter::Entity TraceWriter::makeEntity(const SourceState& state, const std::string& name,
                                            const std::string& label) const {
  Entity entity{.name = name, .tracks = {}};
  for (const auto& group : state.groups) {
    Track track;
    const auto title = label.empty() ? group.title : label + " " + group.title;
    track.head =
        ",\n{\"ph\":\"C\",\"pid\":" + state.pid + ",\"name\":" + jsonString(title) + ",\"ts\":";
    track.hash = std::hash<std::string>{}(track.head);
    track.wanted = file_ == nullptr || wanted_ == nullptr || wanted_->contains(track.hash);
    entity.tracks.push_back(std::move(track));
  }
  return entity;
}

void TraceWriter::beginSample(const runs::Sample& sample) {
  auto& state = sources_[sample.place];
  ++state.sample;
  state.next = 0;
  if (file_ == nullptr) return;
  state.begin = microseconds(sample.begin);
  state.time = microseconds(sample.time);
}

TraceWriter::Entity& TraceWriter::deviceOf(SourceState& state, const runs::Source& source,
                                           std::string_view name) const {
  auto& entities = state.entities;
  if (state.next < entities.size() && entities[state.next].name == name)
    return entities[state.next++];
  const auto found = std::ranges::find(entities, name, &Entity::name);
  if (found != entities.end()) {
    state.next = std::size_t(found - entities.begin()) + 1;
    return *found;
  }
  const std::string text(name);
  // A core's columns name it already.
  entities.push_back(makeEntity(state, text, source.rows == runs::RowsOf::devices ? text : ""));
  state.next = entities.size();
  return entities.back();
}

void TraceWriter::row(const runs::Sample& sample, const Fields& fields) {
  auto& state = sources_[sample.place];
  const auto& source = *sample.source;
  if (source.rows == runs::RowsOf::processes) {
    processRow(state, sample, fields);
  } else {
    const bool named = source.rows == runs::RowsOf::devices;
    put(state, deviceOf(state, source, named ? fields[source.nameField] : ""), sample, fields);
  }
}

void TraceWriter::processRow(SourceState& state, const runs::Sample& sample, const Fields& fields) {
  const auto pid = runs::pidOf(fields[sample.source->pidField]);
  if (!pid) return;
  const auto name = fields[sample.source->nameField];
  auto& table = state.processes;
  const double total =
      state.totalField != 0 ? runs::numberOf(fields[state.totalField]).value_or(0) : 0;
  auto index = table.find(*pid, state.order);
  const bool known = index != table.none;
  if (!known) index = table.add(*pid);
  auto& entity = table[index];
  if (known && entity.sample == state.sample) return;  // listed twice
  const bool isBorn = !known || total < entity.total - runs::clockNoise;
  if (isBorn || entity.name != name) {
    if (known && isBorn) {
      end(state, sample, entity);
    } else if (known) {
      close(state, entity);
    }
    entity = makeProcess(state, sample, *pid, std::string(name), isBorn);
  }
  entity.sample = state.sample;
  entity.total = total;
  state.order.now.push_back(index);
  if (entity.meant) put(state, entity, sample, fields);
}

/// Two processes that have one PID and one name after each other have tracks of their own.
TraceWriter::Entity TraceWriter::makeProcess(const SourceState& state, const runs::Sample& sample,
                                             int pid, const std::string& name, bool isBorn) {
  auto label = name + " [" + std::to_string(pid) + "]";
  Entity entity{.name = name, .tracks = {}, .meant = run_.processes().has(pid, name)};
  if (!entity.meant) return entity;
  const auto hash = std::hash<std::string>{}(label);
  auto& lives = lives_[hash];
  const auto bit = bitOf(sample);
  const bool isBack = !isBorn && (lives.open & bit) != 0;  // to a name that it had before
  if (!isBack && ((lives.seen & bit) != 0 || lives.open == 0)) lives = {.count = lives.count + 1};
  lives.seen |= bit;
  lives.open |= bit;
  if (lives.count > 1) label += " #" + std::to_string(lives.count);
  entity = makeEntity(state, name, label);
  entity.label = hash;
  entity.life = lives.count;
  return entity;
}

void TraceWriter::end(const SourceState& state, const runs::Sample& sample, Entity& entity) {
  close(state, entity);
  const auto lives = lives_.find(entity.label);
  if (lives != lives_.end() && lives->second.count == entity.life)
    lives->second.open &= ~bitOf(sample);
}

void TraceWriter::put(SourceState& state, Entity& entity, const runs::Sample& sample,
                      const Fields& fields) {
  for (std::size_t i = 0; i < state.groups.size(); ++i) {
    const auto& group = state.groups[i];
    auto& track = entity.tracks[i];
    if (file_ == nullptr) {
      const auto isZero = [&](const runs::Column* column) {
        return isZeroText(fields[column->field]);
      };
      if (!track.isZero || std::ranges::all_of(group.columns, isZero)) continue;
      track.isZero = false;
      found_->insert(track.hash);
    } else if (!track.wanted) {
      continue;
    } else if (limits_.step > 0) {
      addToStep(state, group, track, sample, fields);
    } else {
      putEvent(state, group, track, sample, fields);
    }
  }
}

void TraceWriter::putEvent(const SourceState& state, const Group& group, Track& track,
                           const runs::Sample& sample, const Fields& fields) {
  using std::string_view_literals::operator""sv;
  const bool isRate = group.columns.front()->bytes;
  const auto& first = fields[group.columns.front()->field];
  if (!isRate && group.columns.size() == 1 && isJsonNumber(first)) {
    file_->put(track.head, group.ofPeriod ? state.begin : state.time, R"(,"args":{"value":)"sv,
               first, "}}"sv);
    ++events_;
    return;
  }
  // What takes no text over does what a step of one sample does.
  addToStep(state, group, track, sample, fields);
  putStep(group, track);
}

void TraceWriter::addToStep(const SourceState& state, const Group& group, Track& track,
                            const runs::Sample& sample, const Fields& fields) {
  const auto step = limits_.step > 0 ? std::int64_t(sample.time / limits_.step) : 0;
  if (track.step >= 0 && track.step != step) putStep(group, track);
  const bool begins = track.step < 0;
  if (begins) {
    track.step = step;
    track.time = group.ofPeriod ? state.begin : state.time;
    track.largest.assign(group.columns.size(), std::nan(""));
  }
  for (std::size_t i = 0; i < group.columns.size(); ++i) {
    const auto& column = *group.columns[i];
    auto value = runs::numberOf(fields[column.field]);
    if (!value || (column.bytes && sample.period <= 0)) continue;
    if (column.bytes) *value = *value / sample.period / mebi;
    auto& largest = track.largest[i];
    if (!(largest >= *value)) largest = *value;
  }
}

void TraceWriter::putStep(const Group& group, Track& track) {
  track.step = -1;
  std::string values;
  for (std::size_t i = 0; i < group.columns.size(); ++i) {
    if (std::isnan(track.largest[i])) continue;
    const auto key = group.columns.size() == 1 ? "\"value\"" : jsonString(group.columns[i]->metric);
    values += (values.empty() ? "" : ",") + key + ":" + jsonNumber(track.largest[i]);
  }
  if (values.empty()) return;
  file_->put(track.head, track.time, ",\"args\":{", values, "}}");
  ++events_;
}

/// Ends the tracks of a process with a zero, or viewers would draw its last values on to the end.
/// A state lasts until the sample that does not have it any more.
void TraceWriter::close(const SourceState& state, Entity& entity) {
  if (file_ == nullptr || !entity.meant) return;
  for (std::size_t i = 0; i < state.groups.size(); ++i) {
    const auto& group = state.groups[i];
    auto& track = entity.tracks[i];
    if (!track.wanted) continue;
    if (track.step >= 0) putStep(group, track);
    file_->put(track.head, group.ofPeriod ? state.begin : state.time, R"(,"args":{"value":0}})");
    ++events_;
  }
}

void TraceWriter::endSample(const runs::Sample& sample) {
  auto& state = sources_[sample.place];
  if (sample.source->rows != runs::RowsOf::processes) return;
  for (const auto index : state.order.before) {
    auto& entity = state.processes[index];
    if (entity.sample == 0 || entity.sample == state.sample) continue;
    end(state, sample, entity);
    state.processes.take(index);
  }
  state.order.before.swap(state.order.now);
  state.order.now.clear();
  state.order.next = 0;
}

void TraceWriter::finish() {
  for (auto& state : sources_) {
    const auto putWaiting = [&](Entity& entity) {
      for (std::size_t i = 0; i < entity.tracks.size(); ++i) {
        if (entity.tracks[i].step >= 0) putStep(state.groups[i], entity.tracks[i]);
      }
    };
    std::ranges::for_each(state.entities, putWaiting);
    for (const auto index : state.processes.all())
      putWaiting(state.processes[index]);
  }
}
