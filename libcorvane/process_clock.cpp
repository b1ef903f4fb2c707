#include "process_clock.h"

#include <array>
#include <string>
#include <string_view>
#include <time.h>
#include <unistd.h>

#include "kernel_file.h"

namespace {

ProcessClock replacement = nullptr;

std::optional<std::uint64_t> kernelClock(int pid) {
  // The kernel's fixed numbering of these clocks: what clock_getcpuclockid works out, without the
  // second system call that it makes to try the clock.
  const auto id = static_cast<clockid_t>((~static_cast<unsigned>(pid) << 3) | 2U);
  timespec used{};
  if (::clock_gettime(id, &used) != 0) return std::nullopt;
  return std::uint64_t(used.tv_sec) * 1'000'000'000 + std::uint64_t(used.tv_nsec);
}

bool procIsOfOurNamespace() {
  std::array<char, 16> target{};
  const ssize_t length = ::readlink("/proc/self", target.data(), target.size());
  return length > 0 &&
         std::string_view(target.data(), std::size_t(length)) == std::to_string(::getpid());
}

}  // namespace

ProcessClock processClock() {
  if (replacement != nullptr) return replacement;
  if (!onRealKernel() || !procIsOfOurNamespace() || !kernelClock(::getpid())) return nullptr;
  return kernelClock;
}

void replaceProcessClock(ProcessClock clock) {
  replacement = clock;
}
