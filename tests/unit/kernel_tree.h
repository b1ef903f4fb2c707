#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

/// A small tree of kernel files in a folder of its own that stands for "/" as long as it lives, so
/// that a test can be a machine that is not at hand.
class KernelTree {
 public:
  KernelTree(std::initializer_list<std::pair<std::string, std::string>> files = {});
  ~KernelTree();
  KernelTree(const KernelTree&) = delete;
  KernelTree& operator=(const KernelTree&) = delete;

  /// Writes a file in place, with the folders above it: what is kept open sees the new content.
  void write(const std::string& path, std::string_view content) const;
  void link(const std::string& path, const std::string& target) const;
  void remove(const std::string& path) const;

 private:
  std::string root_;
};
