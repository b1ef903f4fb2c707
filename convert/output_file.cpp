#include "output_file.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

namespace {

constexpr std::size_t bufferSize = 128UL << 10U;

}  // namespace

void OutputFile::open(const std::string& path) {
  flush();
  failed_ = true;
  if (descriptor_ >= 0) return;
  // A fifo that nobody reads fails instead of waiting for a reader.
  constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK;
  descriptor_ = ::open(path.c_str(), flags, 0666);
  failed_ = descriptor_ < 0;
  path_ = path;
}

void OutputFile::close() {
  flush();
  if (descriptor_ < 0 || ::close(descriptor_) != 0) failed_ = true;
  descriptor_ = -1;
}

void OutputFile::flush() {
  if (descriptor_ < 0 && used_ != 0) failed_ = true;
  if (!failed_) writeOut({buffer_.data(), used_});
  used_ = 0;
}

void OutputFile::makeRoom(std::size_t count) {
  flush();
  if (buffer_.size() <= count) buffer_.resize(std::max(count + 1, bufferSize));
}

void OutputFile::writeOut(std::string_view text) {
  while (!text.empty()) {
    const auto count = write(descriptor_, text.data(), text.size());
    if (count > 0) {
      text.remove_prefix(std::size_t(count));
    } else if (count == 0 || errno != EINTR) {
      failed_ = true;
      std::cerr << "corvane: " + path_ + " cannot be written: " + std::strerror(errno) +
                       "; it is incomplete\n";
      return;
    }
  }
}
