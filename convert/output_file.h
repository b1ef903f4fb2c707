#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "folder.h"

/// A file that is written through a buffer, with the states of an output stream: what is put into
/// it while it is not open or has failed is lost. What fails is told once on standard error.
class OutputFile {
 public:
  OutputFile() = default;
  ~OutputFile() { close(); }
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  /// Makes or truncates the file. Fails where it cannot, and where a file is open already; a
  /// success ends an earlier failure.
  void open(const FilePath& file);
  void close();
  /// Hands what the buffer holds to the system.
  void flush();
  bool hasFailed() const { return failed_; }

  template <class... Texts>
  void put(const Texts&... texts) {
    char* to = room((std::string_view(texts).size() + ...));
    ((to = copyTo(to, texts)), ...);
    take(to);
  }

  /// Room for so many bytes, to be written in place; take() says where they end.
  char* room(std::size_t count) {
    if (buffer_.size() - used_ <= count) makeRoom(count);
    return buffer_.data() + used_;
  }
  void take(const char* end) { used_ = std::size_t(end - buffer_.data()); }

 private:
  static char* copyTo(char* to, std::string_view text) {
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
  }
  void makeRoom(std::size_t count);
  void writeOut(std::string_view text);
  void fail(const char* what, const std::string& reason);

  int descriptor_ = -1;
  bool failed_ = false;
  std::string path_;
  std::vector<char> buffer_;
  std::size_t used_ = 0;
};
