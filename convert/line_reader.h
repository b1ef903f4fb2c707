#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "folder.h"

/// Reads a file line by line through a buffer that grows only for a line longer than itself. What
/// is no regular file reads as an empty one: some never end. Where the file cannot be read on, it
/// ends with the last line that is whole, said on standard error.
class LineReader {
 public:
  static constexpr std::size_t usualBuffer = 128UL << 10U;

  explicit LineReader(const FilePath& file, std::size_t bufferSize = usualBuffer);
  ~LineReader();
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  bool isOpen() const { return descriptor_ >= 0; }
  /// The next line without its end, valid until the next call; false at the end of the file.
  bool next(std::string_view& line);
  /// Whether the file's last line has been given and has no line end.
  bool endedInsideLine() const { return unterminated_; }

 private:
  bool fill();

  std::string path_;
  int descriptor_ = -1;
  bool ended_ = false;  // nothing more is read
  bool unterminated_ = false;
  std::vector<char> buffer_;
  std::size_t begin_ = 0, end_ = 0;  // what is in the buffer and not yet given out
};
