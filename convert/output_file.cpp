#include "output_file.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

#include "print_line.h"

namespace {

constexpr std::size_t bufferSize = 128UL << 10U;
const std::string incomplete = "; it is incomplete";

}  // namespace

void OutputFile::open(const FilePath& file) {
  flush();
  failed_ = true;
  if (descriptor_ >= 0) return;
  descriptor_ = openToWrite(file);
  failed_ = false;
  path_ = file.path;
  if (descriptor_ < 0) fail(" cannot be opened: ", openingFault(errno));
}

void OutputFile::close() {
  flush();
  const int descriptor = std::exchange(descriptor_, -1);
  if (descriptor < 0) {
    failed_ = true;
  } else if (::close(descriptor) != 0) {
    fail(" cannot be written: ", std::strerror(errno) + incomplete);
  }
}

void OutputFile::fail(const char* what, const std::string& reason) {
  if (!std::exchange(failed_, true)) warnOf(path_ + what + reason);
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
      fail(" cannot be written: ", std::strerror(errno) + incomplete);
      return;
    }
  }
}
