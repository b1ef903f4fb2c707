#pragma once

#include <filesystem>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "process_filter.h"
#include "result_reader.h"
#include "statistics.h"
#include "time_axis.h"

namespace runs {

/// What of a run is meant.
struct Selection {
  double from = 0;  // seconds of the run
  double to = std::numeric_limits<double>::infinity();
  std::vector<std::string> processes;  // names (shell patterns) or PIDs; empty: all
};

/// What reading a run finds out about one of its sources.
struct SourceActivity {
  std::uint64_t samples = 0;
  double first = 0, last = 0;  // seconds of the run, of the samples meant
  Statistics steps;            // seconds from sample to sample
  double nominalPeriod = 0;    // seconds, as the metadata have it; 0: not known
  /// Seconds: the nominal one, or what the steps tell; 0 where there are fewer than two samples.
  double period() const;
  /// Samples that are missing against the period.
  std::uint64_t missed() const;
};

/// One sample of a source: one row or a block of rows.
struct Sample {
  std::size_t place;  // of the source among those of the run
  const Source* source;
  double time;           // seconds of the run
  double begin;          // where the period before it began
  double period;         // time - begin, or what the source's period usually is where that is 0
  std::uint64_t number;  // counted from 0 among the samples meant
};

class RowVisitor {
 public:
  virtual ~RowVisitor() = default;
  virtual void beginSample(const Sample& /*sample*/) {}
  virtual void row(const Sample& sample, const Fields& fields) = 0;
  virtual void endSample(const Sample& /*sample*/) {}
};

/// Called after every sample with the part that is done, 0 to 1; whether to go on.
using Progress = std::function<bool(double)>;

/// Reads all result files of a run side by side, sample by sample in the order of time, on one
/// axis: seconds since the run's start, by the counter's stamps where the run had them.
class RunReader {
 public:
  RunReader(const std::filesystem::path& folder, Selection selection);

  /// In the order of the options.
  std::size_t sourceCount() const { return files_.size(); }
  const Source& source(std::size_t place) const { return files_[place].reader->source(); }
  const SourceActivity& activity(std::size_t place) const { return files_[place].activity; }
  ProcessFilter& processes() { return processes_; }
  const std::optional<Metadata>& metadata() const { return metadata_; }

  /// Gives the visitor every sample that is meant. Once.
  void read(RowVisitor& visitor, const Progress& progress = {});

  /// Whether no sample has been given.
  bool isEmpty() const;
  /// Where it is empty: the time of the run's last sample, which was not meant; negative: there is
  /// none.
  double end() const;
  /// What could not be read, a sentence each.
  std::vector<std::string> notes() const;

 private:
  struct File {
    std::unique_ptr<ResultReader> reader;
    SourceActivity activity;
    bool hasRow = false;
    double usualPeriod = 0;  // by its first two samples, in its own microseconds
    double before = -1;      // time of the sample before; negative: none
  };

  void open(const ResultFile& file, const std::optional<FirstTimes>& first);
  double timeOf(const File& file) const { return axis_.secondsAt(file.reader->microseconds()); }
  File* earliest();
  Sample beginOf(const File& file) const;
  void skipSample(File& file);
  void readSample(File& file, RowVisitor& visitor);

  std::string name_;  // of the folder
  Selection selection_;
  ProcessFilter processes_;
  std::optional<Metadata> metadata_;
  std::vector<File> files_;
  std::vector<std::string> notes_;
  std::uint64_t bytes_ = 0;
  TimeAxis axis_;
};

}  // namespace runs
