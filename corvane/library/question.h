#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <string>

#include "child.h"

/// A process of its own that is asked something: its standard output is the answer, its standard
/// error what it has to say about it. It is not there any longer once the answer is.
class Question {
 public:
  /// Starts the process, which runs `body`. Throws a std::system_error where it cannot.
  explicit Question(const std::function<void()>& body);

  /// Reads until both texts have ended or it is `until`, when a process that still runs is killed.
  void finish(std::chrono::steady_clock::time_point until);

  const std::string& answer() const { return texts_[0]; }
  const std::string& errors() const { return texts_[1]; }
  const runs::Ending& ending() const { return child_.ending(); }

 private:
  void readSome(std::size_t i);

  Child child_;
  std::array<int, 2> pipes_{-1, -1};
  std::array<std::string, 2> texts_;
};
