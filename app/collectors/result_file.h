#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

/// A column of the header line.
struct Column {
  std::string_view name;
  std::size_t width;
};

/// The result file of one source: fields right-aligned in fixed widths, without separators; a value
/// that is longer than its width is written whole. What is added becomes visible with flush().
class ResultFile {
 public:
  /// Creates or truncates run folder + "/" + `prefix` + suffix + ".txt", which must be a regular
  /// file with one name: a refusal is said on standard error.
  explicit ResultFile(std::string_view prefix);
  ~ResultFile();
  ResultFile(const ResultFile&) = delete;
  ResultFile& operator=(const ResultFile&) = delete;

  bool isOpen() const { return fd_ >= 0; }
  /// Where the file could not be opened, prints `message` and ends the process with status 0.
  void endUnlessOpen(std::string_view message) const;

  void writeHeader(std::initializer_list<Column> columns);

  void addText(std::string_view text, std::size_t width);
  void addInteger(std::integral auto value, std::size_t width) {
    if constexpr (std::signed_integral<decltype(value)>) {
      addSigned(value, width);
    } else {
      addUnsigned(value, width);
    }
  }
  /// Fixed notation.
  void addFixed(double value, std::size_t width, int decimals = 2);
  /// Six significant digits, in exponent notation from a million on (the streams' default).
  void addGeneral(double value, std::size_t width);
  void endLine() { buffer_ += '\n'; }

  /// Hands the complete lines to the kernel in one write. A file that takes no more (disk full) is
  /// cut back to its last complete line and left alone from then on, said once on standard error;
  /// what is added to it, or to one that could not be opened, is lost.
  void flush();

 private:
  void addSigned(std::int64_t value, std::size_t width);
  void addUnsigned(std::uint64_t value, std::size_t width);
  void giveUp(int error);

  std::string path_;
  int fd_ = -1;
  std::string buffer_;       ///< lines not yet handed over
  std::size_t written_ = 0;  ///< bytes of the file, all complete lines
};
