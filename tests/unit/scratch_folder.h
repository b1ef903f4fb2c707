#pragma once

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>
#include <stdlib.h>
#include <string>
#include <string_view>

inline std::string contentOf(const std::filesystem::path& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

/// A run folder of a test's own, which goes with it.
class ScratchFolder {
 public:
  ScratchFolder() : path_(std::filesystem::temp_directory_path() / "corvane-run.XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("mkdtemp");
  }
  ~ScratchFolder() { std::filesystem::remove_all(path_); }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }
  std::string read(std::string_view name) const { return contentOf(path(name)); }
  std::string write(std::string_view name, std::string_view content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }

 private:
  std::string path_;
};
