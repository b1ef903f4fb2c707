#include "question.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <system_error>
#include <unistd.h>

using Clock = std::chrono::steady_clock;

Question::Question(const std::function<void()>& body) {
  std::array<int, 2> out{}, err{};
  if (::pipe2(out.data(), O_CLOEXEC) != 0 || ::pipe2(err.data(), O_CLOEXEC) != 0)
    throw std::system_error(errno, std::generic_category());
  child_ = Child::fork([&] {
    // It ends with this process, and by what ends any other.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::dup2(out[1], STDOUT_FILENO);
    ::dup2(err[1], STDERR_FILENO);
    body();
    std::fflush(stdout);
    return 0;
  });
  ::close(out[1]);
  ::close(err[1]);
  pipes_ = {out[0], err[0]};
}

void Question::readSome(std::size_t i) {
  std::array<char, 4096> piece{};
  const auto got = ::read(pipes_[i], piece.data(), piece.size());
  if (got > 0) {
    texts_[i].append(piece.data(), std::size_t(got));
  } else if (got == 0 || errno != EINTR) {
    ::close(pipes_[i]);
    pipes_[i] = -1;
  }
}

void Question::finish(Clock::time_point until) {
  while (pipes_[0] >= 0 || pipes_[1] >= 0) {
    std::array<pollfd, 2> waited{{{.fd = pipes_[0], .events = POLLIN, .revents = 0},
                                  {.fd = pipes_[1], .events = POLLIN, .revents = 0}}};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()).count();
    if (left <= 0 || (::poll(waited.data(), waited.size(), int(left)) < 0 && errno != EINTR)) break;
    for (std::size_t i = 0; i < waited.size(); ++i)
      if (waited[i].revents != 0) readSome(i);
  }
  const bool hangs = pipes_[0] >= 0 || pipes_[1] >= 0;
  for (auto& pipe : pipes_) {
    if (pipe >= 0) ::close(pipe);
    pipe = -1;
  }
  if (hangs) child_.signal(SIGKILL);
  child_.wait();
}
