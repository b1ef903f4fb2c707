#pragma once

#include <string>

struct SourcesOptions {
  std::string profiler;  ///< whose library is asked; the one beside this program unless named
};

/// Prints which sources this machine offers, and why others are missing. Returns the exit status.
int sources(const SourcesOptions& options);
