#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "new_file.h"
#include "process_table.h"
#include "processes.h"
#include "run_reader.h"

/// The tracks that are not zero throughout, by a hash of what they are of.
using TrackSet = std::unordered_set<std::uint64_t>;

struct TraceLimits {
  double step = 0;              // seconds; 0: an event for each sample
  std::uint64_t bytes = ~0ULL;  // where the file gets longer than this, nothing more is put
};

/// Turns the samples of a run into counter events: a track for each metric, device and process, the
/// values of a natural pair in one.
class TraceWriter : public runs::RowVisitor {
 public:
  /// Only finds out which tracks are not zero throughout.
  TraceWriter(runs::RunReader& run, TrackSet& found) : TraceWriter(run, nullptr, &found, {}) {}
  /// Writes those that are in `wanted`, or all where that is null.
  TraceWriter(runs::RunReader& run, NewFile& file, const TrackSet* wanted, TraceLimits limits)
      : TraceWriter(run, &file, nullptr, limits) {
    wanted_ = wanted;
  }

  void beginSample(const runs::Sample& sample) override;
  void row(const runs::Sample& sample, const Fields& fields) override;
  void endSample(const runs::Sample& sample) override;
  /// Writes the steps that have not ended yet.
  void finish();

  std::uint64_t events() const { return events_; }
  bool isFull() const { return file_ != nullptr && file_->size() > limits_.bytes; }

 private:
  /// Columns that make one event.
  struct Group {
    std::vector<const runs::Column*> columns;
    std::string title;  // with the unit
    bool ofPeriod = false;
  };
  /// One event of a sample or, where steps are wider, of a step.
  struct Track {
    std::string head;  // the event's text up to its time
    std::uint64_t hash = 0;
    bool wanted = false, isZero = true;
    std::int64_t step = -1;  // of the values that wait; negative: none
    std::string time;        // when that began
    std::vector<double> largest;
  };
  /// What has a row of its own: the machine, a device, a process.
  struct Entity {
    std::string name;
    std::vector<Track> tracks;  // as the source's groups
    std::uint64_t sample = 0;   // the number of the last one that had it, from 1
    bool meant = true;
    double total = 0;         // of a process: processor seconds since its start
    std::uint64_t label = 0;  // of a process: its hash
    std::uint32_t life = 1;
  };
  /// The processes that have had one label, over all sources, each of which sees them begin and end
  /// at its own times.
  struct Lives {
    std::uint32_t count = 0;
    std::uint64_t seen = 0, open = 0;  // the last one, by which sources: a bit each
  };
  struct SourceState {
    std::vector<Group> groups;
    std::string pid;
    std::size_t totalField = 0;    // processor seconds of a process; 0: none
    std::vector<Entity> entities;  // the machine, or the devices
    std::size_t next = 0;          // the entity that is likely to be the next row's
    runs::ProcessTable<Entity> processes;
    runs::ProcessTable<Entity>::Order order;
    std::uint64_t sample = 0;
    std::string begin, time;  // of the sample in microseconds, as JSON
  };

  TraceWriter(runs::RunReader& run, NewFile* file, TrackSet* found, TraceLimits limits);
  static std::vector<Group> groupsOf(const runs::Source& source);
  Entity makeEntity(const SourceState& state, const std::string& name,
                    const std::string& label) const;
  Entity& deviceOf(SourceState& state, const runs::Source& source, std::string_view name) const;
  void processRow(SourceState& state, const runs::Sample& sample, const Fields& fields);
  void put(SourceState& state, Entity& entity, const runs::Sample& sample, const Fields& fields);
  void putEvent(const SourceState& state, const Group& group, Track& track,
                const runs::Sample& sample, const Fields& fields);
  void addToStep(const SourceState& state, const Group& group, Track& track,
                 const runs::Sample& sample, const Fields& fields);
  void putStep(const Group& group, Track& track);
  Entity makeProcess(const SourceState& state, const runs::Sample& sample, int pid,
                     const std::string& name, bool isBorn);
  void end(const SourceState& state, const runs::Sample& sample, Entity& entity);
  void close(const SourceState& state, Entity& entity);

  runs::RunReader& run_;
  NewFile* file_;
  TrackSet* found_;
  const TrackSet* wanted_ = nullptr;
  TraceLimits limits_;
  std::vector<SourceState> sources_;
  std::unordered_map<std::uint64_t, Lives> lives_;  // by the label's hash
  std::uint64_t events_ = 0;
};
