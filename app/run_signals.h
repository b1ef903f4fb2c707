#pragma once

#include <atomic>

// How a run ends: the stop signals (SIGINT, SIGTERM, SIGABRT) ask for it, SIGALRM says that the
// total time is over. They are blocked in all threads (and in what a monitor library starts from
// them) but for where the main thread lets them in, so none is lost between a test and a wait, and
// none meets a console that its own thread holds. Only abort() runs the handler elsewhere.

extern std::atomic<bool> stopRequested;  ///< a stop signal has come
extern std::atomic<bool> timeExpired;    ///< the run timer has fired
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes the flags");

/// Asks for the end of the run as a stop signal does.
void requestStop();

/// Blocks the four signals, and SIGPIPE for good, in this thread and in every thread that it starts
/// from now on, installs their handler and starts the run timer.
void signal_setup();

/// Lets the signals in until one of the flags is set.
void waitForRunEnd();

/// Waits until the console has taken all that was said; a further stop signal gives it up.
void waitForReader();

/// Lets the signals in as long as it lives.
class SignalsLetIn {
 public:
  SignalsLetIn();
  ~SignalsLetIn();
  SignalsLetIn(const SignalsLetIn&) = delete;
  SignalsLetIn& operator=(const SignalsLetIn&) = delete;
};
