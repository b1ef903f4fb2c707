#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "kernel_tree.h"
#include "process_clock.h"

/// What a process of a tree is made of; `bytes` 0: a kernel thread or a zombie.
struct TreeProcess {
  int pid, parent = 1;
  std::string comm = "comm";
  int user = 0, system = 0;
  long long start = 10, bytes = 1 << 20;
};

inline std::string folderOf(int pid) {
  return "/proc/" + std::to_string(pid);
}

inline void writeProcess(const KernelTree& tree, const TreeProcess& p,
                         std::string_view cmdline = {}) {
  const auto number = [](auto value) { return " " + std::to_string(value); };
  tree.write(folderOf(p.pid) + "/stat", std::to_string(p.pid) + " (" + p.comm + ") S" +
                                            number(p.parent) + " 0 0 0 -1 4 0 0 0 0" +
                                            number(p.user) + number(p.system) + " 7 7 20 0 1 0" +
                                            number(p.start) + number(p.bytes) + " 99 0\n");
  tree.write(folderOf(p.pid) + "/cmdline", cmdline);
}

/// Processor-time clocks that stand where a test puts them, as long as this object lives.
struct FakeClocks {
  static inline std::map<int, std::uint64_t> used;

  FakeClocks() {
    replaceProcessClock([](int pid) -> std::optional<std::uint64_t> { return used[pid]; });
  }
  ~FakeClocks() {
    replaceProcessClock(nullptr);
    used.clear();
  }
};
