#pragma once

#include <gtest/gtest.h>
#include <string>
#include <utility>

/// What a call prints on standard output, and on standard error.
struct Printed {
  std::string out, err;
};

template <class Call>
Printed printedBy(Call call) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  call();
  auto out = testing::internal::GetCapturedStdout();
  return {.out = std::move(out), .err = testing::internal::GetCapturedStderr()};
}
