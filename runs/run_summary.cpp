#include "run_summary.h"

#include <algorithm>

#include "process_tracker.h"

namespace runs {

namespace {

constexpr double mebi = 1024.0 * 1024.0;

/// More devices than this are not followed: interfaces of containers come and go by the thousand.
constexpr std::size_t mostDevices = 256;

/// The series of one source.
class MetricTracker {
 public:
  explicit MetricTracker(bool envelopes) : envelopes_(envelopes) {}

  void beginSample() { next_ = 0; }
  void row(const Sample& sample, const Fields& fields) {
    const auto& source = *sample.source;
    auto* const series =
        seriesOf(source, source.rows == RowsOf::devices ? fields[source.nameField] : "");
    if (series == nullptr) return;
    for (std::size_t i = 0; i < source.columns.size(); ++i)
      add((*series)[i], source.columns[i], sample, fields);
  }

  bool leftDevicesOut() const { return full_; }
  void moveTo(std::vector<MetricSeries>& metrics) {
    for (auto& entity : entities_) {
      for (auto& series : entity.series) {
        if (series.statistics.count() != 0) metrics.push_back(std::move(series));
      }
    }
  }

 private:
  struct Entity {
    std::string name;
    std::vector<MetricSeries> series;
  };

  /// The device's series; null where there are too many devices. They come in the same order in
  /// every sample.
  std::vector<MetricSeries>* seriesOf(const Source& source, std::string_view name) {
    if (next_ < entities_.size() && entities_[next_].name == name)
      return &entities_[next_++].series;
    const auto found = std::ranges::find(entities_, name, &Entity::name);
    if (found != entities_.end()) {
      next_ = std::size_t(found - entities_.begin()) + 1;
      return &found->series;
    }
    full_ = full_ || entities_.size() == mostDevices;
    if (full_) return nullptr;
    Entity entity{.name = std::string(name), .series = {}};
    for (const auto& column : source.columns) {
      entity.series.push_back(
          {.source = source.word,
           .entity = source.rows == RowsOf::devices ? entity.name : column.entity,
           .metric = column.metric,
           .unit = column.unit,
           .meaning = column.meaning,
           .pair = column.pair,
           .statistics = {},
           .envelope = Envelope()});
    }
    next_ = entities_.size() + 1;
    return &entities_.emplace_back(std::move(entity)).series;
  }

  void add(MetricSeries& series, const Column& column, const Sample& sample,
           const Fields& fields) const {
    auto value = numberOf(fields[column.field]);
    if (!value || (column.bytes && sample.period <= 0)) return;
    if (column.bytes) *value = *value / sample.period / mebi;
    series.statistics.add(*value);
    if (envelopes_) series.envelope.add(sample.time, *value);
  }

  bool envelopes_, full_ = false;
  std::size_t next_ = 0;
  std::vector<Entity> entities_;
};

class Summarizer : public RowVisitor {
 public:
  Summarizer(RunReader& reader, const Detail& detail)
      : processes(reader.processes(), detail.processEnvelopes, detail.moments),
        metrics(reader.sourceCount(), MetricTracker(detail.envelopes)) {}

  void beginSample(const Sample& sample) override {
    if (isOfProcesses(sample)) {
      processes.beginSample(sample);
    } else {
      metrics[sample.place].beginSample();
    }
  }
  void row(const Sample& sample, const Fields& fields) override {
    if (isOfProcesses(sample)) {
      processes.row(sample, fields);
    } else {
      metrics[sample.place].row(sample, fields);
    }
  }
  void endSample(const Sample& sample) override {
    if (isOfProcesses(sample)) processes.endSample(sample);
  }

  ProcessTracker processes;
  std::vector<MetricTracker> metrics;  // a source each

 private:
  static bool isOfProcesses(const Sample& sample) {
    return sample.source->rows == RowsOf::processes;
  }
};

SourceSummary summaryOf(const Source& source, const SourceActivity& activity) {
  return {.word = source.word,
          .title = source.title,
          .samples = activity.samples,
          .expected = activity.samples + activity.missed(),
          .period = activity.period(),
          .first = activity.first,
          .last = activity.last};
}

}  // namespace

bool RunSummary::empty() const {
  return std::ranges::all_of(sources,
                             [](const SourceSummary& source) { return source.samples == 0; });
}

RunSummary readRun(const std::filesystem::path& folder, const Selection& selection,
                   const Detail& detail, const Progress& progress) {
  RunReader reader(folder, selection);
  Summarizer found(reader, detail);
  reader.read(found, progress);

  RunSummary run;
  run.folder = folder;
  run.metadata = reader.metadata();
  for (std::size_t place = 0; place < reader.sourceCount(); ++place) {
    const auto source = summaryOf(reader.source(place), reader.activity(place));
    if (source.samples != 0) {
      run.first = run.empty() ? source.first : std::min(run.first, source.first);
      run.last = std::max(run.last, source.last);
    }
    run.sources.push_back(source);
    found.metrics[place].moveTo(run.metrics);
    if (found.metrics[place].leftDevicesOut()) {
      run.notes.push_back("more than " + std::to_string(mostDevices) + " devices in " +
                          source.word + "; those that came later are left out");
    }
  }
  found.processes.finish();
  run.processes = std::move(found.processes.processes);
  run.names = std::move(found.processes.names);
  run.processCount = found.processes.count;
  run.moments = std::move(found.processes.moments);
  run.end = reader.end();
  for (auto& note : reader.notes())
    run.notes.push_back(std::move(note));
  if (found.processes.namesDropped != 0) {
    run.notes.push_back("sums by name are of the names that used most; " +
                        std::to_string(found.processes.namesDropped) + " ended ones are left out");
  }
  return run;
}

}  // namespace runs
