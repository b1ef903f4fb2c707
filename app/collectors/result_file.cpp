#include "result_file.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "console.h"
#include "end_process.h"
#include "result_folder.h"
#include "run_parameters.h"

namespace {

/// The lock is held as long as the file is open; nothing else is made of it, a later run goes on.
void tellOtherRun(int fd) {
  static std::atomic<bool> told{false};
  if (::flock(fd, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK || told.exchange(true)) return;
  warn("another run is writing into " + logFolder + ", too: each overwrites what the other writes");
}

}  // namespace

ResultFile::ResultFile(std::string_view prefix)
    : path_(logFolder + "/" + std::string(prefix) + filename + ".txt"),
      fd_(openToWrite({path_, &runFolder()})) {
  if (fd_ < 0 && isRefusal(errno)) warn(path_ + " is not written: " + openingFault(errno));
  if (fd_ >= 0) tellOtherRun(fd_);
}

ResultFile::~ResultFile() {
  if (fd_ < 0) return;
  struct stat info{};
  if (::fstat(fd_, &info) == 0 && info.st_nlink == 0) {
    warn(path_ + " was removed while the run went on");
  }
  ::close(fd_);
}

void ResultFile::endUnlessOpen(std::string_view message) const {
  if (isOpen()) return;
  say(message);
  endProcess(0);
}

void ResultFile::writeHeader(std::initializer_list<Column> columns) {
  for (const auto& column : columns)
    addText(column.name, column.width);
  endLine();
  flush();
}

void ResultFile::addText(std::string_view text, std::size_t width) {
  buffer_.append(width > text.size() ? width - text.size() : 0, ' ');
  buffer_ += text;
}

void ResultFile::addSigned(std::int64_t value, std::size_t width) {
  char digits[24];
  addText({digits, std::to_chars(digits, std::end(digits), value).ptr}, width);
}

void ResultFile::addUnsigned(std::uint64_t value, std::size_t width) {
  char digits[24];
  addText({digits, std::to_chars(digits, std::end(digits), value).ptr}, width);
}

void ResultFile::addFixed(double value, std::size_t width, int decimals) {
  char digits[400];  // the largest double has 309 digits before the point
  const auto end =
      std::isfinite(value)
          ? std::to_chars(digits, std::end(digits), value, std::chars_format::fixed, decimals).ptr
          : digits + std::snprintf(digits, sizeof digits, "%f", value);
  addText({digits, end}, width);
}

void ResultFile::addGeneral(double value, std::size_t width) {
  char digits[32];
  addText({digits, digits + std::snprintf(digits, sizeof digits, "%g", value)}, width);
}

void ResultFile::flush() {
  std::string_view left = buffer_;
  while (fd_ >= 0 && !left.empty()) {
    const ssize_t count = ::write(fd_, left.data(), left.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      const int error = count < 0 ? errno : EIO;
      const auto taken = buffer_.size() - left.size();
      const auto lastEnd = std::string_view(buffer_).substr(0, taken).rfind('\n');
      written_ += lastEnd == std::string_view::npos ? 0 : lastEnd + 1;
      giveUp(error);
      break;
    }
    left.remove_prefix(std::size_t(count));
    if (left.empty()) written_ += buffer_.size();
  }
  buffer_.clear();
}

void ResultFile::giveUp(int error) {
  [[maybe_unused]] const int result = ::ftruncate(fd_, off_t(written_));
  warn(path_ + ": " + std::strerror(error) + "; it keeps what was written and takes no more");
  ::close(fd_);
  fd_ = -1;
}
