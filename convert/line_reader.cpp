#include "line_reader.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

#include "print_line.h"

LineReader::LineReader(const FilePath& file, std::size_t bufferSize)
    : path_(file.path), descriptor_(openToRead(file)), buffer_(bufferSize) {
  const int error = errno;
  struct stat info{};
  ended_ = !isOpen() || fstat(descriptor_, &info) != 0 || !S_ISREG(info.st_mode);
  if (!isOpen() && isRefusal(error)) warnOf(path_ + " is not read: " + openingFault(error));
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

/// Adds to what is left in the buffer, which it moves to the front; false at the end of the file,
/// and then for good.
bool LineReader::fill() {
  if (ended_) return false;
  end_ -= begin_;
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_);
  begin_ = 0;
  if (end_ == buffer_.size()) buffer_.resize(2 * buffer_.size());
  ssize_t count = 0;
  do {
    count = read(descriptor_, buffer_.data() + end_, buffer_.size() - end_);
  } while (count < 0 && errno == EINTR);
  ended_ = count <= 0;
  if (count < 0) {
    warnOf(path_ + " cannot be read to its end: " + std::strerror(errno));
    end_ = 0;  // the start of a line is no line
  }
  end_ += std::size_t(std::max(count, ssize_t{0}));
  return !ended_;
}
