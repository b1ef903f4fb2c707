#include "run_signals.h"

#include <cerrno>
#include <signal.h>
#include <string_view>
#include <unistd.h>

#include "run_parameters.h"

std::atomic<bool> stopRequested{false};
std::atomic<bool> timeExpired{false};

namespace {

constexpr int runSignals[] = {SIGINT, SIGTERM, SIGABRT, SIGALRM};

sigset_t runSignalSet() {
  sigset_t set;
  sigemptyset(&set);
  for (const int sig : runSignals)
    sigaddset(&set, sig);
  return set;
}

/// Not through a stream: abort() comes here on whichever thread, whatever lock that holds.
void put(std::string_view text) {
  [[maybe_unused]] const auto written = ::write(STDOUT_FILENO, text.data(), text.size());
}

void signal_handler(int sig) {
  const int savedErrno = errno;
  // The flag first: a console whose reader stands still must not hold up the end of the run.
  if (sig == SIGINT || sig == SIGABRT || sig == SIGTERM) stopRequested = true;
  if (sig == SIGALRM) timeExpired = true;
  put("\n");
  if (!stopRequested && !timeExpired) {
    const char digits[] = {char('0' + sig / 10), char('0' + sig % 10)};
    put("warning: signal ");
    put(sig < 10 ? std::string_view(digits + 1, 1) : std::string_view(digits, 2));
    put(" caught!\n");
  }
  errno = savedErrno;
}

}  // namespace

void signal_setup() {
  const sigset_t set = runSignalSet();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  static struct sigaction action = {};
  action.sa_handler = signal_handler;
  for (const int sig : runSignals)
    sigaction(sig, &action, nullptr);
  // A file that may grow no further is to fail as on a full disk, not to kill the run.
  signal(SIGXFSZ, SIG_IGN);
  if (profilingTime != 0) alarm(unsigned(profilingTime));
}

void waitForRunEnd() {
  sigset_t open;
  pthread_sigmask(SIG_BLOCK, nullptr, &open);
  for (const int sig : runSignals)
    sigdelset(&open, sig);
  while (!stopRequested && !timeExpired)
    sigsuspend(&open);
}

SignalsLetIn::SignalsLetIn() {
  const sigset_t set = runSignalSet();
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

SignalsLetIn::~SignalsLetIn() {
  const sigset_t set = runSignalSet();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}
