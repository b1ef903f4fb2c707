// The floor that a monitor of processes is measured against: read_loop FILE SAMPLES PERIOD_MS
// Opens, reads and closes /proc/PID/FILE of all processes that have something in it, SAMPLES times,
// and does nothing else. The processes are those of its start.

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

ssize_t readOnce(const std::string& path) {
  static std::array<char, 4096> buffer;
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return -1;
  const ssize_t size = ::read(file, buffer.data(), buffer.size());
  ::close(file);
  return size;
}

std::vector<std::string> filesOfProcesses(const std::string& name) {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const auto folder = entry.path().filename().string();
    if (folder.find_first_not_of("0123456789") != folder.npos) continue;
    auto path = entry.path().string() + "/" + name;
    if (readOnce(path) > 0) paths.push_back(std::move(path));
  }
  return paths;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 4) return 2;
  const auto paths = filesOfProcesses(argv[1]);
  const long samples = std::atol(argv[2]);
  const std::chrono::milliseconds period(std::atol(argv[3]));
  for (long i = 0; i < samples; ++i) {
    for (const auto& path : paths)
      readOnce(path);
    std::this_thread::sleep_for(period);
  }
} catch (const std::exception& fault) {
  std::fprintf(stderr, "read_loop: %s\n", fault.what());
  return 1;
}
