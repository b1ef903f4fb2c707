#include "notice.h"

#include <mutex>
#include <set>
#include <string>
#include <unistd.h>

namespace {

// Never destroyed: a monitor may still be sampling while the process ends.
auto& mutex = *new std::mutex;
auto& said = *new std::set<std::string, std::less<>>;

}  // namespace

void forgetNotices() {
  const std::lock_guard lock(mutex);
  said.clear();
}

void noticeOnce(std::string_view text) {
  const std::lock_guard lock(mutex);
  if (!said.emplace(text).second) return;
  const std::string line = "corvane: " + std::string(text) + "\n";
  // Nobody is left to tell when standard error itself cannot be written.
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}
