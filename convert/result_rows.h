#pragma once

#include <string>

#include "fields.h"
#include "line_reader.h"

/// In what the three converters' readings of a result file differ; the rest is the same.
struct Reading {
  bool takesUnterminatedLastLineTwice = false;
  bool tellsEmptyLines = false;
};

/// The trace's tests the stream before it reads and not after: at the end of the file inside a
/// line that line is still there. A collector ends each line, so it shows in foreign files only.
inline constexpr Reading traceReading{.takesUnterminatedLastLineTwice = true};
inline constexpr Reading csvReading{.tellsEmptyLines = true};
inline constexpr Reading summaryReading{};

/// The rows of a result file, one for each line that is not empty (one of blanks only is a row
/// without fields).
class ResultRows {
 public:
  ResultRows(const FilePath& file, Reading reading,
             std::size_t bufferSize = LineReader::usualBuffer)
      : lines_(file, bufferSize), reading_(reading) {}

  bool isOpen() const { return lines_.isOpen(); }
  /// Goes to the next row; false when there is none. Tells of empty lines on standard output.
  bool next();
  /// The row's fields, valid until the next call of next().
  const Fields& fields() const { return fields_; }

 private:
  LineReader lines_;
  Reading reading_;
  bool repeated_ = false;
  Fields fields_;
};
