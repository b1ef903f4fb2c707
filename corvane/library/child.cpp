#include "child.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace {

std::system_error lastError() {
  return {errno, std::generic_category()};
}

/// What the new program could not be started for; 0 once it has been.
int errorOfStart(int pipe) {
  int error = 0;
  ssize_t got = 0;
  while ((got = ::read(pipe, &error, sizeof error)) < 0 && errno == EINTR) {
  }
  return got == sizeof error ? error : 0;
}

/// Whether it begins as a program for a processor does, be it this one or another.
bool isBinary(const char* executable) {
  std::array<char, 4> magic{};
  const int fd = ::open(executable, O_RDONLY | O_CLOEXEC);
  const bool whole = ::read(fd, magic.data(), magic.size()) == ssize_t(magic.size());
  ::close(fd);
  return whole && std::memcmp(magic.data(),
                              "\x7f"
                              "ELF",
                              magic.size()) == 0;
}

}  // namespace

Child Child::fork(const std::function<int()>& body) {
  Child child;
  child.pid_ = ::fork();
  if (child.pid_ < 0) throw lastError();
  // Not exit(): what the parent has not yet written must not be written twice.
  if (child.pid_ == 0) ::_exit(body());
  child.ended_ = false;
  return child;
}

Child Child::start(const std::string& executable, const std::vector<std::string>& arguments,
                   const std::function<void()>& prepare) {
  std::array<int, 2> pipe{};
  if (::pipe2(pipe.data(), O_CLOEXEC) != 0) throw lastError();
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const auto& argument : arguments)
    argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  const auto path = executable.find('/') == executable.npos ? "./" + executable : executable;
  auto child = fork([&] {
    prepare();
    ::execv(path.c_str(), argv.data());
    int error = errno;
    if (error == ENOEXEC && !isBinary(path.c_str())) {
      // A script without a line that names its shell.
      ::execvp(path.c_str(), argv.data());
      error = errno;
    }
    [[maybe_unused]] const auto written = ::write(pipe[1], &error, sizeof error);
    return 127;
  });
  ::close(pipe[1]);
  const int error = errorOfStart(pipe[0]);
  ::close(pipe[0]);
  if (error == 0) return child;
  child.wait();
  throw std::system_error(error, std::generic_category());
}

void Child::reap(int options) {
  int status = 0;
  pid_t pid = 0;
  do {
    pid = ::waitpid(pid_, &status, options);
  } while (pid < 0 && errno == EINTR);
  if (pid == 0) return;
  ended_ = true;
  if (pid < 0) return;
  if (WIFSIGNALED(status)) {
    ending_.signal = WTERMSIG(status);
  } else {
    ending_.status = WEXITSTATUS(status);
  }
}

bool Child::runs() {
  if (!ended_) reap(WNOHANG);
  return !ended_;
}

void Child::wait() {
  if (!ended_) reap(0);
}

void Child::signal(int number) const {
  if (!ended_) ::kill(pid_, number);
}

int shellStatus(const runs::Ending& ending) {
  constexpr int signalled = 128;
  return ending.signal ? signalled + *ending.signal : ending.status.value_or(1);
}
