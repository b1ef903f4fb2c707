#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "envelope.h"
#include "moments.h"
#include "processes.h"
#include "run_reader.h"
#include "sources.h"
#include "statistics.h"

namespace runs {

/// What is kept beyond the statistics.
struct Detail {
  bool envelopes = false;            // of the metrics
  std::size_t processEnvelopes = 0;  // capacity of those of processes and names; 0: none
  bool moments = false;
};

/// One metric of one entity.
struct MetricSeries {
  std::string source, entity, metric, unit;
  Meaning meaning = Meaning::state;
  std::string pair;
  Statistics statistics;
  Envelope envelope;  // where asked for
};

struct SourceSummary {
  std::string word, title;
  std::uint64_t samples = 0;
  std::uint64_t expected = 0;  // with those that are missing against the period
  double period = 0;           // seconds; 0: not known
  double first = 0, last = 0;  // seconds of the run
};

struct RunSummary {
  std::filesystem::path folder;
  double first = 0, last = 0;  // seconds of the run: the first sample of all, and the last one
  double end = -1;             // where that has none: the end of the whole run; negative: none
  std::vector<SourceSummary> sources;  // in the order of the options, those without samples too
  std::vector<MetricSeries>
      metrics;                     // sources, then entities, in their order; none without samples
  std::vector<Process> processes;  // those kept, with most processor time first
  std::vector<Process> names;      // the same summed by name, over all processes
  std::uint64_t processCount = 0;  // of all, kept or not
  Moments moments;
  std::optional<Metadata> metadata;
  std::vector<std::string> notes;  // what could not be read, a sentence each

  /// Whether there is anything in it.
  bool empty() const;
};

/// Reads a run once, in memory that grows with what lives at a time and not with the run. What
/// cannot be read is left out and noted.
RunSummary readRun(const std::filesystem::path& folder, const Selection& selection,
                   const Detail& detail, const Progress& progress = {});

}  // namespace runs
