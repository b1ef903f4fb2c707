#pragma once

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Takes a path to be removed when a signal ends the program, as Ctrl-C does; empty: none. One at a
/// time.
void removeOnSignal(std::string_view path);

/// A file that is complete or not there: written beside its place under another name, and put there
/// in the end. Where something other than a file is in its place (a device, a pipe), that is
/// written itself.
class NewFile {
 public:
  /// Compressed as gzip does where the path ends in ".gz".
  explicit NewFile(std::string path);
  /// Removes what was not committed.
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  bool hasFailed() const { return failed_; }
  /// Bytes that were put, before compression.
  std::uint64_t size() const { return written_ + used_; }

  template <class... Texts>
  void put(const Texts&... texts) {
    const std::size_t count = (std::string_view(texts).size() + ...);
    if (buffer_.size() - used_ < count) makeRoom(count);
    (copy(texts), ...);
  }

  /// Puts the file in its place. False after a message where it or a write before failed.
  bool commit();
  /// Begins again with an empty file.
  void restart();

 private:
  struct Compressor;

  void copy(std::string_view text) {
    std::memcpy(buffer_.data() + used_, text.data(), text.size());
    used_ += text.size();
  }
  void makeRoom(std::size_t count);
  void flush();
  void write(std::string_view bytes);
  void finishCompression();
  void fail(const std::string& what);

  std::string path_, partPath_;
  int descriptor_ = -1;
  bool failed_ = false;
  std::unique_ptr<Compressor> compressor_;
  std::vector<char> buffer_;
  std::size_t used_ = 0;
  std::uint64_t written_ = 0;
};
