#include "signals.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <system_error>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr auto oneByOne = 20ms;    // until the kernel has told all processes of a group
constexpr auto sameEvent = 250ms;  // what comes twice within it (both ways) is one request
constexpr auto answerPatience = 5s;
constexpr unsigned char endOfAnswer = 0;

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
  std::array<int, 2> answers{}, questions{};
  if (::pipe2(answers.data(), O_CLOEXEC | O_NONBLOCK) != 0 ||
      ::pipe2(questions.data(), O_CLOEXEC) != 0)
    throw std::system_error(errno, std::generic_category());
  process_ = Child::fork([&] {
    ::close(questions[1]);
    ::close(answers[0]);
    listen(questions[0], answers[1]);
    return 0;
  });
  ::close(answers[1]);
  ::close(questions[0]);
  answers_ = answers[0];
  questions_ = questions[1];
}

GroupListener::~GroupListener() {
  ::close(questions_);
  ::close(answers_);
  process_.wait();
}

/// In the listening process, which was made with the signals blocked: they stay with it until it is
/// asked, so that an answer is true however long this process waits for a processor.
void GroupListener::listen(int questions, int answers) {
  const int signals = openSignals(endingSignals());
  unsigned char question = 0;
  while (::read(questions, &question, 1) == 1) {
    int signal = 0;
    do {
      signal = nextOf(signals);
      const auto report = static_cast<unsigned char>(signal);
      [[maybe_unused]] const auto written = ::write(answers, &report, 1);
    } while (signal != endOfAnswer);
  }
}

void GroupListener::ask() {
  const auto now = std::chrono::steady_clock::now();
  [[maybe_unused]] const auto written = ::write(questions_, "?", 1);
  pollfd answer{.fd = answers_, .events = POLLIN, .revents = 0};
  unsigned char report = endOfAnswer;
  while (::poll(&answer, 1, int(std::chrono::milliseconds(answerPatience).count())) > 0 &&
         ::read(answers_, &report, 1) == 1 && report != endOfAnswer) {
    if (report < NSIG) heardAt_[report] = now;
  }
}

bool GroupListener::heard(int signal) {
  const auto now = std::chrono::steady_clock::now();
  const auto isHeard = [&] {
    ask();
    return now - heardAt_[signal] <= sameEvent;
  };
  if (isHeard()) return true;
  std::this_thread::sleep_for(oneByOne);
  return isHeard();
}
