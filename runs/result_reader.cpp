#include "result_reader.h"

#include <cmath>

#include "numbers.h"

namespace runs {

namespace {

/// Microseconds, thirty thousand years: beyond it nobody counts.
constexpr double latest = 1e18;

}  // namespace

std::optional<double> numberOf(std::string_view field) {
  const auto number = toDouble(field);
  return number && std::isfinite(*number) ? number : std::nullopt;
}

ResultReader::ResultReader(const ResultFile& file)
    : name_(file.path.filename().string()), lines_(file.path.string()) {
  readHeader(file.prefix);
}

void ResultReader::readHeader(std::string_view prefix) {
  std::string_view line;
  isEmpty_ = !nextLine(line);
  if (isEmpty_) return;
  cutFields(line, fields_);
  hasHeader_ = !isCut_ && fields_.size() > 1 && fields_[0].starts_with("Time");
  if (hasHeader_) source_ = sourceOf(prefix, fields_);
}

bool ResultReader::nextLine(std::string_view& line) {
  if (!lines_.next(line)) return false;
  bytesRead_ += line.size() + 1;
  isCut_ = lines_.endedInsideLine();
  return true;
}

bool ResultReader::next() {
  std::string_view line;
  while (hasHeader_ && nextLine(line) && !isCut_) {
    if (line.empty()) {
      afterEmptyLine_ = true;
      continue;
    }
    cutFields(line, fields_);
    if (fields_.size() == source_.width && takeTime()) return true;
    ++leftOut_;
  }
  return false;
}

/// Whether the row's time is one, and not before that of the row before.
bool ResultReader::takeTime() {
  const bool sameTime = fields_[0] == timeText_;
  if (!sameTime) {
    const auto number = numberOf(fields_[0]);
    if (!number || *number < 0 || *number < microseconds_ || *number > latest) return false;
    microseconds_ = *number;
    timeText_ = fields_[0];
  }
  beginsSample_ = !sameTime || afterEmptyLine_ || source_.rows == RowsOf::machine;
  afterEmptyLine_ = false;
  return true;
}

std::vector<std::string> ResultReader::notes() const {
  std::vector<std::string> notes;
  if (!lines_.isOpen()) {
    notes.push_back(name_ + " cannot be opened");
  } else if (isEmpty_) {
    notes.push_back(name_ + " is empty");
  } else if (!hasHeader_) {
    notes.push_back(name_ + " does not begin with a header line; it is left out");
  } else if (microseconds_ < 0 && !isCut_ && leftOut_ == 0) {
    notes.push_back(name_ + " has no samples");
  } else if (isCut_) {
    notes.push_back(name_ + " ends in the middle of a line, which is left out");
  }
  if (leftOut_ != 0) {
    notes.push_back(name_ + ": " + std::to_string(leftOut_) +
                    (leftOut_ == 1 ? " line that is" : " lines that are") +
                    " no sample left out (another width, no time, or a time that runs back)");
  }
  return notes;
}

}  // namespace runs
