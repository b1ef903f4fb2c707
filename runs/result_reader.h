#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fields.h"
#include "line_reader.h"
#include "run_files.h"
#include "sources.h"

namespace runs {

/// Reads one result file row by row. What is no row of it (of another width, without a time,
/// earlier than the row before, cut at the file's end) is left out and counted.
class ResultReader {
 public:
  /// Opens the file and reads its header.
  explicit ResultReader(const ResultFile& file);

  const Source& source() const { return source_; }
  /// Goes to the next row; false where there is none.
  bool next();
  /// Whether the row is the first one of its sample.
  bool beginsSample() const { return beginsSample_; }
  /// The row's fields; valid until the next call of next().
  const Fields& fields() const { return fields_; }
  /// The row's time as the file has it, in microseconds.
  double microseconds() const { return microseconds_; }
  std::string_view timeText() const { return timeText_; }
  std::uint64_t bytesRead() const { return bytesRead_; }

  /// What was wrong with the file so far, a sentence each.
  std::vector<std::string> notes() const;

 private:
  void readHeader(std::string_view prefix);
  bool nextLine(std::string_view& line);
  bool takeTime();

  std::string name_;
  LineReader lines_;
  Source source_;
  Fields fields_;
  std::string timeText_;
  double microseconds_ = -1;
  bool afterEmptyLine_ = false, beginsSample_ = false;
  bool isEmpty_ = false, hasHeader_ = false, isCut_ = false;
  std::uint64_t bytesRead_ = 0, leftOut_ = 0;
};

/// A number of a result file; nothing where the field is none or not finite.
std::optional<double> numberOf(std::string_view field);

}  // namespace runs
