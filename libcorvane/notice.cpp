#include "notice.h"

#include <iostream>
#include <mutex>
#include <set>
#include <string>

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
  // By the stream, which the program may have made one that waits for no reader.
  std::cerr << "corvane: " + std::string(text) + "\n";
}
