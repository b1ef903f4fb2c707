#include "run_reader.h"

#include <algorithm>
#include <cmath>

#include "time_axis.h"

namespace runs {

namespace {

namespace fs = std::filesystem;

/// In one gap: more than a day in milliseconds.
constexpr double mostMissed = 1e9;

/// Steps between half and one and a half of the usual one are whole ones.
bool isOneStep(double step, double usual) {
  return step >= usual / 2 && step < usual * 1.5;
}

/// One file for each source: where there are several, the one that is named as its folder.
std::vector<ResultFile> chosenFiles(const fs::path& folder, std::vector<std::string>& notes) {
  const auto end = "profiler_" + plainFolder(folder).filename().string() + ".txt";
  std::vector<ResultFile> chosen;
  for (auto& file : listResultFiles(folder)) {
    const auto same = std::ranges::find(chosen, file.prefix, &ResultFile::prefix);
    if (same == chosen.end()) {
      chosen.push_back(std::move(file));
      continue;
    }
    if (file.path.filename().string().ends_with(end)) std::swap(*same, file);
    notes.push_back(file.path.filename().string() +
                    " is left out: " + same->path.filename().string() + " is of the same source");
  }
  return chosen;
}

}  // namespace

double SourceActivity::period() const {
  if (nominalPeriod > 0) return nominalPeriod;
  const double usual = steps.quantile(0.5);
  Range whole;
  for (const auto& cell : steps.cells()) {
    const double step = (double(cell.low) + double(cell.high)) / 2;
    if (!isOneStep(step, usual)) continue;
    whole.count += cell.count;
    whole.sum += step * cell.count;
  }
  return whole.mean();
}

std::uint64_t SourceActivity::missed() const {
  const double usual = period();
  std::uint64_t missing = 0;
  for (const auto& cell : steps.cells()) {
    const double step = (double(cell.low) + double(cell.high)) / 2;
    if (usual > 0 && step > usual)
      missing += std::uint64_t(std::min(std::round(step / usual) - 1, mostMissed)) * cell.count;
  }
  return missing;
}

RunReader::RunReader(const fs::path& folder, Selection selection)
    : name_(plainFolder(folder).filename().string()),
      selection_(std::move(selection)),
      processes_(selection_.processes),
      metadata_(readMetadata(folder)) {
  std::error_code error;
  if (!metadata_ && fs::exists(metadataFile(folder), error)) {
    notes_.push_back(metadataFile(folder).filename().string() +
                     " cannot be read as a run's metadata; the run is read without");
  }
  std::vector<FirstTimes> times;
  for (const auto& file : chosenFiles(folder, notes_)) {
    const auto first = firstTimes(file);
    if (first) times.push_back(*first);
    open(file, first);
  }
  axis_ = timeAxis(times, metadata_);
  std::ranges::stable_sort(files_, {},
                           [](const File& file) { return placeOf(file.reader->source().word); });
}

void RunReader::open(const ResultFile& file, const std::optional<FirstTimes>& first) {
  File opened;
  opened.reader = std::make_unique<ResultReader>(file);
  const auto& source = opened.reader->source();
  if (source.width == 0) {
    std::ranges::copy(opened.reader->notes(), std::back_inserter(notes_));
    return;
  }
  if (first) opened.usualPeriod = first->period();
  if (metadata_) {
    const auto known = std::ranges::find(metadata_->sources, source.word, &SourcePeriod::source);
    if (known != metadata_->sources.end())
      opened.activity.nominalPeriod = known->milliseconds / 1e3;
  }
  std::error_code error;
  const auto size = fs::file_size(file.path, error);
  if (!error) bytes_ += size;
  opened.hasRow = opened.reader->next();
  files_.push_back(std::move(opened));
}

RunReader::File* RunReader::earliest() {
  File* first = nullptr;
  for (auto& file : files_) {
    if (file.hasRow && (first == nullptr || timeOf(file) < timeOf(*first))) first = &file;
  }
  return first;
}

Sample RunReader::beginOf(const File& file) const {
  const double time = timeOf(file);
  const double usual = file.usualPeriod * axis_.secondsPerMicrosecond;
  const double begin = file.before >= 0 ? file.before : std::max(0.0, time - usual);
  return {.place = std::size_t(&file - files_.data()),
          .source = &file.reader->source(),
          .time = time,
          .begin = begin,
          .period = time > begin ? time - begin : usual,
          .number = file.activity.samples};
}

void RunReader::skipSample(File& file) {
  do {
    file.hasRow = file.reader->next();
  } while (file.hasRow && !file.reader->beginsSample());
}

void RunReader::readSample(File& file, RowVisitor& visitor) {
  const auto sample = beginOf(file);
  auto& activity = file.activity;
  if (activity.samples == 0) {
    activity.first = sample.time;
  } else {
    activity.steps.add(sample.time - activity.last);
  }
  ++activity.samples;
  activity.last = sample.time;
  visitor.beginSample(sample);
  do {
    visitor.row(sample, file.reader->fields());
    file.hasRow = file.reader->next();
  } while (file.hasRow && !file.reader->beginsSample());
  visitor.endSample(sample);
}

void RunReader::read(RowVisitor& visitor, const Progress& progress) {
  while (auto* const file = earliest()) {
    const double time = timeOf(*file);
    if (time > selection_.to && !isEmpty()) {
      file->hasRow = false;
    } else if (time < selection_.from || time > selection_.to) {
      skipSample(*file);  // where all is skipped, on to where the run ends
    } else {
      readSample(*file, visitor);
    }
    file->before = time;
    if (!progress) continue;
    std::uint64_t done = 0;
    for (const auto& each : files_)
      done += each.reader->bytesRead();
    if (!progress(bytes_ == 0 ? 1 : double(done) / double(bytes_))) return;
  }
}

bool RunReader::isEmpty() const {
  return std::ranges::all_of(files_, [](const File& file) { return file.activity.samples == 0; });
}

double RunReader::end() const {
  double end = -1;
  for (const auto& file : files_)
    end = std::max(end, file.before);
  return end;
}

std::vector<std::string> RunReader::notes() const {
  auto notes = notes_;
  for (const auto& file : files_)
    std::ranges::copy(file.reader->notes(), std::back_inserter(notes));
  if (isEmpty()) return notes;
  for (const auto& pattern : processes_.unmatched())
    notes.push_back("no process of " + name_ + " matches " + pattern);
  return notes;
}

}  // namespace runs
