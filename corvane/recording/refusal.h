#pragma once

#include <stdexcept>
#include <string>

#include "message.h"

/// Why a recording does not start, in one line, and the exit status that goes with it.
struct Refusal : std::runtime_error {
  explicit Refusal(const std::string& line, int exitStatus = Status::wrongUse)
      : std::runtime_error(line), status(exitStatus) {}
  int status;
};
