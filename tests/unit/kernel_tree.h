#pragma once

#include <string>
#include <string_view>

#include "steady_time.h"

/// A small tree of kernel files in a folder of its own that stands for "/" as long as it lives, so
/// that a test can be a machine that is not at hand. What the kernel tells by other means than
/// files has files there too:
///
///     /clocks/PID            processor time in ns; "refused" where the kernel keeps it to itself
///     /counters/TYPE:CONFIG,CONFIG1,CONFIG2@CPU   a count, and the ns that its counter was enabled
///                            and running; it cannot be opened where there is no such file
///
/// Time stands still there, an hour after the machine's start, until somebody lets it pass.
class KernelTree {
 public:
  KernelTree();
  ~KernelTree();
  KernelTree(const KernelTree&) = delete;
  KernelTree& operator=(const KernelTree&) = delete;

  /// Writes a file in place, with the folders above it: what is kept open sees the new content.
  void write(const std::string& path, std::string_view content) const;
  void link(const std::string& path, const std::string& target) const;
  void remove(const std::string& path) const;
  void pass(std::chrono::milliseconds time) { now_ += time; }

 private:
  std::string root_;
  SteadyTime now_{std::chrono::hours(1)};
};
