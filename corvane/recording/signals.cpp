#include "signals.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <system_error>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr auto patience = 20ms;    // for a report from the group
constexpr auto sameEvent = 250ms;  // what comes twice within it (both ways) is one request

sigset_t endingSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    // Who had the end of the terminal ignored (nohup) wants it ignored.
    if (signal != SIGHUP || action.sa_handler != SIG_IGN) sigaddset(&set, signal);
  }
  return set;
}

int openSignals(sigset_t set) {
  const int fd = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
  if (fd < 0) throw std::system_error(errno, std::generic_category());
  return fd;
}

int nextOf(int fd) {
  signalfd_siginfo info{};
  return ::read(fd, &info, sizeof info) == sizeof info ? int(info.ssi_signo) : 0;
}

}  // namespace

Signals::Signals() {
  auto set = endingSignals();
  sigaddset(&set, SIGCHLD);
  ::sigprocmask(SIG_BLOCK, &set, &before_);
  // A message that nobody reads any more must not end the recording.
  struct sigaction ignore = {};
  ignore.sa_handler = SIG_IGN;
  ::sigaction(SIGPIPE, &ignore, &pipeBefore_);
  fd_ = openSignals(set);
}

Signals::~Signals() {
  while (next() != 0) {
    // What came once all was done has nothing to end any more.
  }
  ::close(fd_);
  restore();
}

void Signals::restore() const {
  ::sigaction(SIGPIPE, &pipeBefore_, nullptr);
  ::sigprocmask(SIG_SETMASK, &before_, nullptr);
}

void Signals::wait(Time until) const {
  const auto left = std::max(until - std::chrono::steady_clock::now(), Time::duration::zero());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec timeout{.tv_sec = time_t(seconds.count()),
                         .tv_nsec = long(std::chrono::nanoseconds(left - seconds).count())};
  pollfd signals{.fd = fd_, .events = POLLIN, .revents = 0};
  ::ppoll(&signals, 1, &timeout, nullptr);
}

int Signals::next() const {
  return nextOf(fd_);
}

GroupListener::GroupListener() {
  std::array<int, 2> reports{}, life{};
  if (::pipe2(reports.data(), O_CLOEXEC | O_NONBLOCK) != 0 || ::pipe2(life.data(), O_CLOEXEC) != 0)
    throw std::system_error(errno, std::generic_category());
  process_ = Child::fork([&] {
    ::close(life[1]);
    ::close(reports[0]);
    reports_ = reports[1];
    life_ = life[0];
    listen();
    return 0;
  });
  ::close(reports[1]);
  ::close(life[0]);
  reports_ = reports[0];
  life_ = life[1];
}

GroupListener::~GroupListener() {
  ::close(life_);
  ::close(reports_);
  process_.wait();
}

/// In the listening process, which was made with the signals blocked.
void GroupListener::listen() {
  const int signals = openSignals(endingSignals());
  std::array<pollfd, 2> waited{{{.fd = signals, .events = POLLIN, .revents = 0},
                                {.fd = life_, .events = POLLIN, .revents = 0}}};
  while (waited[1].revents == 0) {
    if (::poll(waited.data(), waited.size(), -1) < 0 && errno != EINTR) return;
    while (const int signal = nextOf(signals)) {
      const auto report = static_cast<unsigned char>(signal);
      [[maybe_unused]] const auto written = ::write(reports_, &report, 1);
    }
  }
}

bool GroupListener::heard(int signal) {
  const auto now = std::chrono::steady_clock::now();
  pollfd reports{.fd = reports_, .events = POLLIN, .revents = 0};
  unsigned char report = 0;
  while (::poll(&reports, 1, int(patience.count())) > 0 && ::read(reports_, &report, 1) == 1) {
    if (report < NSIG) heardAt_[report] = now;
    if (report == signal) return true;
  }
  return now - heardAt_[signal] <= sameEvent;
}
