#include "line_reader.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

LineReader::LineReader(const std::string& path, std::size_t bufferSize)
    : descriptor_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)), buffer_(bufferSize) {
  struct stat info{};
  isDevice_ = isOpen() && fstat(descriptor_, &info) == 0 && S_ISCHR(info.st_mode);
}

LineReader::~LineReader() {
  if (isOpen()) close(descriptor_);
}

bool LineReader::next(std::string_view& line) {
  if (unterminated_) return false;
  std::size_t searched = begin_;
  for (;;) {
    const char* const data = buffer_.data();
    const void* const lineEnd = std::memchr(data + searched, '\n', end_ - searched);
    const std::size_t unsearched = end_ - begin_;
    if (lineEnd != nullptr) {
      line = {data + begin_, static_cast<const char*>(lineEnd)};
      begin_ += line.size() + 1;
      return true;
    }
    if (!fill()) break;
    searched = begin_ + unsearched;
  }
  line = {buffer_.data() + begin_, end_ - begin_};
  begin_ = end_;
  unterminated_ = !line.empty();
  return unterminated_;
}

/// Adds to what is left in the buffer, which it moves to the front; false at the end of the file.
bool LineReader::fill() {
  if (isDevice_) return false;
  end_ -= begin_;
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_);
  begin_ = 0;
  if (end_ == buffer_.size()) buffer_.resize(2 * buffer_.size());
  ssize_t count = 0;
  do {
    count = read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
  } while (count < 0 && errno == EINTR);
  if (count <= 0) return false;
  end_ += std::size_t(count);
  return true;
}
