#pragma once

#include <functional>
#include <string>
#include <vector>

/// A machine's story in a text file: what its kernel files hold, how they change, and what a
/// monitor is to publish meanwhile. A first part without a mark says what is played; then
///
///     ### remark                what comes next
///     === /proc/file            the file's new content follows
///     === /sys/link -> target   a symbolic link
///     --- /sys/path             the file or folder vanishes
///     +++ MS                    the next sample comes so many milliseconds after the last, not one
///     >>> start [PID...]        the monitor is made (for these processes), and told its period
///     >>> sample [PID...]       the next sample (of these processes); what it publishes follows
///     >>> stop                  the same, where the wait for the period's end says stop
///     >>> reads                 how often the last sample has read a file follows
///     >>> errors                what standard error has held since the start follows
///
/// A byte that text does not hold is written as \x and two digits.
struct Scenario {
  struct Step {
    std::string mark, target, text;
  };

  std::string about;
  std::vector<Step> steps;

  explicit Scenario(const std::string& file);

  /// Plays the story on a tree of its own. `start` makes the monitor and returns what takes a
  /// sample and writes down what is published.
  using Pids = std::vector<int>;
  using Sampler = std::function<std::string(const Pids&)>;
  void play(const std::function<Sampler(const Pids&)>& start) const;
};

/// Stands for the program's wait: lets no time pass and says go on (110), except in a step "stop".
int scenarioWait(int slot);
/// The slot that was waited for since the last call of this; -1: none.
int slotWaitedFor();
