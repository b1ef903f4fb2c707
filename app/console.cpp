#include "console.h"

#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <mutex>
#include <poll.h>
#include <streambuf>
#include <string>
#include <unistd.h>

#include "console_stream.h"
#include "run_signals.h"

namespace {

// Never destroyed: collectors may be writing while the process ends.
ConsoleStream& standardOutput() {
  static auto& stream = *new ConsoleStream(STDOUT_FILENO);
  return stream;
}

ConsoleStream& standardError() {
  static auto& stream = *new ConsoleStream(STDERR_FILENO);
  return stream;
}

void putOnOutput(std::string_view text) {
  std::fflush(stdout);  // what a library has put on the C stream comes first
  if (!standardOutput().put(text)) requestStop();
}

void putOnError(std::string_view text) {
  // Nobody is left to tell when standard error itself cannot be written.
  [[maybe_unused]] const bool isRead = standardError().put(text);
}

/// Takes what is put on a C++ stream to the console, by lines. Libraries write on those from any
/// thread.
class LineBuffer : public std::streambuf {
 public:
  explicit LineBuffer(void (*write)(std::string_view)) : write_(write) {}

 protected:
  int_type overflow(int_type c) override {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char text = traits_type::to_char_type(c);
    xsputn(&text, 1);
    return c;
  }

  std::streamsize xsputn(const char* text, std::streamsize count) override {
    const std::lock_guard lock(mutex_);
    text_.append(text, std::size_t(count));
    writeUpTo(text_.rfind('\n') + 1);
    return count;
  }

  int sync() override {
    const std::lock_guard lock(mutex_);
    writeUpTo(text_.size());
    return 0;
  }

 private:
  void writeUpTo(std::size_t end) {
    if (end == 0) return;
    write_(std::string_view(text_).substr(0, end));
    text_.erase(0, end);
  }

  void (*write_)(std::string_view);
  std::mutex mutex_;
  std::string text_;
};

LineBuffer& outputBuffer() {
  static auto& buffer = *new LineBuffer(putOnOutput);
  return buffer;
}

}  // namespace

void say(std::string_view message) {
  outputBuffer().pubsync();
  putOnOutput(message);
}

void sayAtOnceOrNever(std::string_view message) {
  if (!standardOutput().offer(message)) requestStop();
}

void sayFromHandler(std::string_view piece) {
  standardOutput().putFromHandler(piece);
}

void warn(std::string_view text) {
  putOnError("corvane: " + std::string(text) + "\n");
}

void prepareConsole() {
  int fd = 0;
  do {
    fd = ::open("/dev/null", O_RDWR);
    if (fd < 0) fd = ::open("/", O_RDONLY | O_DIRECTORY);  // takes nothing, either
  } while (fd >= 0 && fd <= STDERR_FILENO);
  if (fd >= 0) ::close(fd);
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  standardOutput();
  standardError();
  static auto& error = *new LineBuffer(putOnError);
  std::cout.rdbuf(&outputBuffer());
  std::cerr.rdbuf(&error);
}

void finishConsole(const sigset_t& mask, bool (*givenUp)()) {
  constexpr timespec tenth{.tv_sec = 0, .tv_nsec = 100'000'000};
  for (;;) {
    pollfd waiting[2];
    nfds_t count = 0;
    for (auto* stream : {&standardOutput(), &standardError()}) {
      if (!stream->flush()) waiting[count++] = {stream->descriptor(), POLLOUT, 0};
    }
    if (count == 0 || givenUp()) return;
    ::ppoll(waiting, count, &tenth, &mask);
  }
}
