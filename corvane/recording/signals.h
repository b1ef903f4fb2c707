#pragma once

#include <chrono>
#include <functional>
#include <signal.h>

#include "child.h"

/// The signals of a recording, taken one by one where the recording waits: what ends it, and the
/// end of a child. One object a process, made before any child.
class Signals {
 public:
  using Time = std::chrono::steady_clock::time_point;

  Signals();
  ~Signals();
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

  /// Waits until a signal has come or it is `until`.
  void wait(Time until) const;
  /// The next signal that has come; 0 where none has.
  int next() const;
  /// For a new process: signals as the caller of this one had set them.
  void restore() const;

 private:
  sigset_t before_;
  struct sigaction pipeBefore_ = {};
  int fd_ = -1;
};

/// Tells a signal to the whole process group, the command in it included (Ctrl-C in a terminal),
/// from one to this process alone, which the command has to be told of. A process of its own in the
/// group listens for that; it ends with this one.
class GroupListener {
 public:
  GroupListener();
  ~GroupListener();
  GroupListener(const GroupListener&) = delete;
  GroupListener& operator=(const GroupListener&) = delete;

  /// Whether the signal that this process has just received, or one like it a moment ago, went to
  /// the group. Waits for the answer: a moment, or on a machine without a free processor until the
  /// listener has got one.
  bool heard(int signal);

 private:
  static void listen(int questions, int answers);
  void ask();

  int questions_ = -1;  ///< a byte for each; closed when this process ends
  int answers_ = -1;    ///< a byte for each signal since the last question, then a 0
  Child process_;
  Signals::Time heardAt_[NSIG] = {};
};
