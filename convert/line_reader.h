#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Reads a file line by line through a buffer that grows only for a line longer than itself. What
/// cannot be read is taken for the end of the file, a folder for an empty file, and so is a
/// character device: some never end.
class LineReader {
 public:
  static constexpr std::size_t usualBuffer = 128UL << 10U;

  explicit LineReader(const std::string& path, std::size_t bufferSize = usualBuffer);
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

  int descriptor_ = -1;
  bool isDevice_ = false;
  bool unterminated_ = false;
  std::vector<char> buffer_;
  std::size_t begin_ = 0, end_ = 0;  // what is in the buffer and not yet given out
};
