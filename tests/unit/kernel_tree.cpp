#include "kernel_tree.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdlib.h>

#include "kernel_file.h"
#include "pmu.h"
#include "process_clock.h"

namespace fs = std::filesystem;

namespace {

const std::string clocks = "/clocks/", counters = "/counters/";

std::optional<std::uint64_t> clockOf(int pid) {
  const auto text = readAttribute(clocks + std::to_string(pid));
  errno = text ? EACCES : EINVAL;
  if (!text || text == "refused") return std::nullopt;
  return std::stoull(*text);
}

Descriptor counterOf(const PmuEvent& event, int cpu) {
  std::ostringstream path;
  path << counters << event.type << std::hex << std::showbase << ':' << event.config[0] << ','
       << event.config[1] << ',' << event.config[2] << '@' << std::dec << cpu;
  auto counter = openKernelFile(path.str().c_str());
  errno = EACCES;
  return counter;
}

/// What is read from a counter, a reading behind the other.
std::string counterReading(std::string_view text) {
  std::istringstream numbers{std::string(text)};
  CounterReading reading;
  numbers >> reading.value >> reading.enabled >> reading.running;
  return {reinterpret_cast<const char*>(&reading), sizeof reading};
}

}  // namespace

KernelTree::KernelTree() : root_(fs::temp_directory_path() / "kernel-tree.XXXXXX") {
  if (mkdtemp(root_.data()) == nullptr) throw fs::filesystem_error("mkdtemp", std::error_code());
  setKernelRoot(root_);
  setCounterOpener(counterOf);
  replaceSteadyTime(&now_);
}

KernelTree::~KernelTree() {
  setKernelRoot("");
  setCounterOpener(nullptr);
  replaceProcessClock(nullptr);
  replaceSteadyTime(nullptr);
  fs::remove_all(root_);
}

void KernelTree::write(const std::string& path, std::string_view content) const {
  fs::create_directories(fs::path(root_ + path).parent_path());
  if (path.starts_with(clocks)) replaceProcessClock(clockOf);
  if (path.starts_with(counters)) {
    std::ofstream(root_ + path, std::ios::app) << counterReading(content);
  } else {
    std::ofstream(root_ + path) << content;
  }
}

void KernelTree::link(const std::string& path, const std::string& target) const {
  fs::create_directories(fs::path(root_ + path).parent_path());
  fs::create_symlink(target, root_ + path);
}

void KernelTree::remove(const std::string& path) const {
  fs::remove_all(root_ + path);
}
