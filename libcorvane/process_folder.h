#pragma once

#include <array>
#include <dirent.h>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "kernel_file.h"

/// `/proc` as the folder of the processes. It stays open; nothing below it does, so that a machine
/// of any number of processes fits into any descriptor limit.
class ProcessFolder {
 public:
  ProcessFolder();

  /// The PIDs of all processes, ascending. Valid until the next call of either.
  const std::vector<int>& all();
  /// Those of `pids` that can be a PID at all, ascending, each once.
  const std::vector<int>& only(const std::vector<int>& pids);

  /// The file `name` of a process, or as much of it as says anything here: a process can have
  /// megabytes of arguments. Nothing and errno where it cannot be read. Valid until the next read.
  std::optional<std::string_view> read(int pid, std::string_view name);

 private:
  struct Closer {
    void operator()(DIR* folder) const { ::closedir(folder); }
  };

  std::unique_ptr<DIR, Closer> folder_;
  std::vector<int> pids_;
  std::array<char, 4096> buffer_{};
};

/// Whether an error of ProcessFolder::read means that the process has ended. Others, such as a
/// permission or a full descriptor table, say nothing about it.
bool meansGone(int error);
