#include "trace.h"

#include <algorithm>
#include <cmath>

#include "json_text.h"
#include "message.h"
#include "new_file.h"
#include "progress.h"
#include "trace_tracks.h"

namespace {

constexpr double bytesPerMb = 1U << 20U;
constexpr int mostAttempts = 40;

struct Attempt {
  std::uint64_t events = 0;
  double part = 0;  // of the run that was written; 1: all
  double shortestPeriod = 0;
};

double shortestPeriod(const runs::RunReader& run) {
  double shortest = 0;
  for (std::size_t place = 0; place < run.sourceCount(); ++place) {
    const double period = run.activity(place).period();
    if (period > 0 && (shortest <= 0 || period < shortest)) shortest = period;
  }
  return shortest;
}

/// Writes the trace; ends early where it gets longer than the limit.
Attempt write(const std::filesystem::path& folder, const runs::Selection& selection, NewFile& file,
              const TrackSet* wanted, TraceLimits limits) {
  runs::RunReader run(folder, selection);
  file.put("{\"displayTimeUnit\":\"ms\",\"traceEvents\":[\n");
  TraceWriter writer(run, file, wanted, limits);
  ProgressLine line("writing");
  double part = 0;
  run.read(writer, [&](double done) {
    part = done;
    line.show(done);
    return !writer.isFull() && !file.hasFailed();
  });
  writer.finish();
  file.put("\n]}\n");
  return {.events = writer.events(),
          .part = writer.isFull() ? std::min(part, 0.999) : 1,
          .shortestPeriod = shortestPeriod(run)};
}

/// Wider steps, until the file is short enough. False where no step makes it so.
bool writeBelow(const std::filesystem::path& folder, const runs::Selection& selection,
                NewFile& file, const TrackSet* wanted, std::uint64_t bytes, Attempt& result) {
  TraceLimits limits{.bytes = bytes == 0 ? ~0ULL : bytes};
  for (int attempt = 0; attempt < mostAttempts; ++attempt) {
    result = write(folder, selection, file, wanted, limits);
    if (result.part >= 1 && file.size() <= limits.bytes) {
      if (limits.step > 0) {
        message("the file would get too long: an event stands for " + jsonNumber(limits.step) +
                " s, with the largest value of that time");
      }
      return true;
    }
    const double factor = std::max(1.5, std::ceil(1.1 / std::max(result.part, 1e-3)));
    const double from = limits.step > 0 ? limits.step : std::max(result.shortestPeriod, 1e-3);
    limits.step = std::ceil(from * factor * 1e3) / 1e3;
    file.restart();
  }
  return false;
}

}  // namespace

int trace(const TraceOptions& options) {
  const auto folder = chosenRun(options.choice.run);
  if (folder.empty()) return Status::wrongUse;
  const auto selection = selectionOf(options.choice);
  TrackSet found;
  runs::RunReader first(folder, selection);
  {
    TraceWriter finder(first, found);
    ProgressLine line("reading");
    first.read(finder, [&](double done) {
      line.show(done);
      return true;
    });
  }
  for (const auto& note : first.notes())
    message(note);
  if (first.isEmpty()) {
    tellEmpty(folder, first.end());
    return Status::wrongUse;
  }
  if (isResultFile(options.output, folder)) return Status::wrongUse;
  NewFile file(options.output);
  Attempt result;
  if (file.hasFailed()) return Status::wrongUse;
  const auto bytes = std::uint64_t(options.maxMb * bytesPerMb);
  if (!writeBelow(folder, selection, file, options.all ? nullptr : &found, bytes, result)) {
    message("no step makes the trace as short as that: choose processes or a part of the run");
    return Status::wrongUse;
  }
  return file.commit() ? Status::done : Status::wrongUse;
}
