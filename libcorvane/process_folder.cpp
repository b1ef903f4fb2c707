#include "process_folder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "notice.h"
#include "text_scan.h"

ProcessFolder::ProcessFolder() : folder_(::opendir((kernelRoot() + "/proc").c_str())) {
  if (!folder_) noticeOnce("no processes: /proc cannot be read");
}

const std::vector<int>& ProcessFolder::all() {
  pids_.clear();
  if (!folder_) return pids_;
  ::rewinddir(folder_.get());
  while (const dirent* entry = ::readdir(folder_.get())) {
    if (const auto pid = toNumber<int>(entry->d_name)) pids_.push_back(*pid);
  }
  // The kernel lists them in order; a tree of files does not.
  if (!std::ranges::is_sorted(pids_)) std::ranges::sort(pids_);
  return pids_;
}

const std::vector<int>& ProcessFolder::only(const std::vector<int>& pids) {
  pids_.clear();
  std::ranges::copy_if(pids, std::back_inserter(pids_), [](int pid) { return pid > 0; });
  std::ranges::sort(pids_);
  const auto twice = std::ranges::unique(pids_);
  pids_.erase(twice.begin(), twice.end());
  return pids_;
}

std::optional<std::string_view> ProcessFolder::read(int pid, std::string_view name) {
  if (!folder_) return std::nullopt;
  std::array<char, 40> path{};
  char* end = std::to_chars(path.data(), path.data() + path.size(), pid).ptr;
  *end++ = '/';
  std::ranges::copy(name, end);
  const int folder = ::dirfd(folder_.get());
  if (folder < 0) return std::nullopt;
  const Descriptor file(::openat(folder, path.data(), O_RDONLY | O_CLOEXEC));
  if (!file) return std::nullopt;
  ssize_t length = 0;
  do {
    length = ::read(file.get(), buffer_.data(), buffer_.size());
  } while (length < 0 && errno == EINTR);
  if (length < 0) return std::nullopt;
  return std::string_view(buffer_.data(), std::size_t(length));
}

bool meansGone(int error) {
  return error == ENOENT || error == ESRCH;
}
