// A crowd of processes to measure: crowd COUNT [RUNNING, default COUNT / 10] [KB EACH, default
// 1024] RUNNING of them do a little work ten times a second, the others sleep for ever. Says
// "ready" when all are there, and ends them when its standard input does.

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

[[noreturn]] void work() {
  for (;;) {
    for (const auto end = Clock::now() + 100us; Clock::now() < end;) {
    }
    std::this_thread::sleep_for(100ms);
  }
}

[[noreturn]] void live(bool runs, std::size_t kilobytes, int ready) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  const std::vector<char> memory(kilobytes * 1024, 'x');
  if (::write(ready, memory.data(), 1) != 1) std::_Exit(1);
  if (runs) work();
  for (;;)
    ::pause();
}

std::size_t argument(int count, char** texts, int index, std::size_t otherwise) {
  return index < count ? std::strtoul(texts[index], nullptr, 10) : otherwise;
}

}  // namespace

int main(int argc, char** argv) try {
  const auto count = argument(argc, argv, 1, 300);
  const auto running = argument(argc, argv, 2, count / 10);
  const auto kilobytes = argument(argc, argv, 3, 1024);
  int ready[2];
  if (::pipe(ready) != 0) return 1;
  std::vector<pid_t> members;
  for (std::size_t i = 0; i < count; ++i) {
    members.push_back(::fork());
    if (members.back() == 0) live(i < running, kilobytes, ready[1]);
    char byte = 0;
    if (members.back() < 0 || ::read(ready[0], &byte, 1) != 1) return 1;
  }
  std::puts("ready");
  std::fflush(stdout);
  while (std::getchar() != EOF) {
  }
  for (const auto member : members)
    ::kill(member, SIGKILL);
  while (::wait(nullptr) > 0) {
  }
} catch (const std::exception& fault) {
  std::fprintf(stderr, "crowd: %s\n", fault.what());
  return 1;
}
