#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "metadata.h"

/// A process that this one started. Destroying it does not end it.
class Child {
 public:
  Child() = default;

  /// Starts `executable` with `arguments` (the first one its name). `prepare` runs in the new
  /// process before; what it does must be safe there. Throws a std::system_error where the program
  /// cannot be started.
  static Child start(const std::string& executable, const std::vector<std::string>& arguments,
                     const std::function<void()>& prepare);
  /// A process that runs `body` and ends with its result as exit status.
  static Child fork(const std::function<int()>& body);

  pid_t pid() const { return pid_; }
  bool started() const { return pid_ > 0; }
  /// Whether it still runs; looks after it once it does not.
  bool runs();
  void signal(int number) const;
  /// Waits for the end.
  void wait();
  const runs::Ending& ending() const { return ending_; }

 private:
  void reap(int options);

  pid_t pid_ = -1;
  bool ended_ = true;
  runs::Ending ending_;
};

/// What a shell makes of an ending: the status, or 128 + the signal's number.
int shellStatus(const runs::Ending& ending);
