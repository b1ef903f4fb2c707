#include "run_signals.h"

#include <cerrno>
#include <signal.h>
#include <string_view>
#include <unistd.h>

#include "console.h"
#include "run_parameters.h"

std::atomic<bool> stopRequested{false};
std::atomic<bool> timeExpired{false};

namespace {

constexpr int runSignals[] = {SIGINT, SIGTERM, SIGABRT, SIGALRM};

std::atomic<bool> isHandling{false};
std::atomic<unsigned> stopSignals{0};
static_assert(std::atomic<unsigned>::is_always_lock_free, "the signal handler counts");

sigset_t runSignalSet() {
  sigset_t set;
  sigemptyset(&set);
  for (const int sig : runSignals)
    sigaddset(&set, sig);
  return set;
}

void signal_handler(int sig) {
  const int savedErrno = errno;
  // The flag first: a console whose reader stands still must not hold up the end of the run.
  if (sig == SIGINT || sig == SIGABRT || sig == SIGTERM) {
    stopRequested = true;
    ++stopSignals;
  }
  if (sig == SIGALRM) timeExpired = true;
  sayFromHandler("\n");
  if (!stopRequested && !timeExpired) {
    const char digits[] = {char('0' + sig / 10), char('0' + sig % 10)};
    sayFromHandler("warning: signal ");
    sayFromHandler(sig < 10 ? std::string_view(digits + 1, 1) : std::string_view(digits, 2));
    sayFromHandler(" caught!\n");
  }
  errno = savedErrno;
}

/// This thread's mask without the run's signals; the timer's stays where it is not asked for.
sigset_t maskToWait(bool withTimer) {
  sigset_t mask;
  pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  for (const int sig : runSignals) {
    if (sig != SIGALRM || withTimer) sigdelset(&mask, sig);
  }
  return mask;
}

}  // namespace

void signal_setup() {
  sigset_t set = runSignalSet();
  sigaddset(&set, SIGPIPE);  // a console that nobody reads is told by the failed write
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  static struct sigaction action = {};
  action.sa_handler = signal_handler;
  for (const int sig : runSignals)
    sigaction(sig, &action, nullptr);
  isHandling = true;
  // A file that may grow no further is to fail as on a full disk, not to kill the run.
  signal(SIGXFSZ, SIG_IGN);
  if (profilingTime != 0) alarm(unsigned(profilingTime));
}

void requestStop() {
  // The signal is for the main thread, which may be about to wait for one.
  if (!stopRequested.exchange(true) && isHandling) kill(getpid(), SIGTERM);
}

void waitForRunEnd() {
  const sigset_t mask = maskToWait(true);
  while (!stopRequested && !timeExpired)
    sigsuspend(&mask);
}

void waitForReader() {
  static unsigned stopsBefore = 0;
  stopsBefore = stopSignals;
  finishConsole(maskToWait(false), [] { return stopSignals != stopsBefore; });
}

SignalsLetIn::SignalsLetIn() {
  const sigset_t set = runSignalSet();
  pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

SignalsLetIn::~SignalsLetIn() {
  const sigset_t set = runSignalSet();
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
}
