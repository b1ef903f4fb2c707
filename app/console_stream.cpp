#include "console_stream.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// A descriptor of our own for the same pipe or terminal, which never waits; -1 where that may not
/// be had (somebody else's terminal).
int reopened(int descriptor) {
  const auto path = "/proc/self/fd/" + std::to_string(descriptor);
  return ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

}  // namespace

ConsoleStream::ConsoleStream(int descriptor) : descriptor_(descriptor) {
  struct stat info{};
  if (::fstat(descriptor, &info) != 0) return;
  if (S_ISSOCK(info.st_mode)) way_ = Way::socket;
  if (!S_ISFIFO(info.st_mode) && ::isatty(descriptor) == 0) return;
  if (const int own = reopened(descriptor); own >= 0) {
    descriptor_ = own;
  } else {
    way_ = Way::polled;
  }
}

ssize_t ConsoleStream::take(std::string_view text) const {
  ssize_t count = 0;
  do {
    if (way_ == Way::socket) {
      count = ::send(descriptor_, text.data(), text.size(), MSG_DONTWAIT);
    } else {
      pollfd ready{.fd = descriptor_, .events = POLLOUT, .revents = 0};
      if (way_ == Way::polled) {
        // So much a pipe takes that has room at all.
        text = text.substr(0, PIPE_BUF);
        if (::poll(&ready, 1, 0) == 0) return 0;
      }
      count = ::write(descriptor_, text.data(), text.size());
    }
  } while (count < 0 && errno == EINTR);
  return count < 0 && errno == EAGAIN ? 0 : count;
}

bool ConsoleStream::writeKept() {
  bool isRead = true;
  while (begin_ < kept_.size()) {
    const ssize_t count = take(std::string_view(kept_).substr(begin_));
    if (count == 0) break;
    if (count < 0) isRead = errno != EPIPE;
    begin_ = count < 0 ? kept_.size() : begin_ + std::size_t(count);
  }
  if (begin_ >= kept_.size() / 2) {
    kept_.erase(0, begin_);
    begin_ = 0;
  }
  keeps_ = !kept_.empty();
  return isRead;
}

bool ConsoleStream::put(std::string_view text) {
  const std::lock_guard lock(mutex_);
  kept_.append(lineEnds_.exchange(0), '\n');
  kept_ += text;
  return writeKept();
}

bool ConsoleStream::offer(std::string_view text) {
  const std::lock_guard lock(mutex_);
  kept_.append(lineEnds_.exchange(0), '\n');
  if (!writeKept()) return false;
  if (keeps_) return true;
  kept_ = text;
  const bool isRead = writeKept();
  if (kept_.size() == text.size() && begin_ == 0) {
    kept_.clear();
    keeps_ = false;
  }
  return isRead;
}

void ConsoleStream::putFromHandler(std::string_view text) {
  if (keeps_ || take(text) == 0) lineEnds_ += unsigned(std::ranges::count(text, '\n'));
}

bool ConsoleStream::flush() {
  put({});
  return !keeps_;
}
