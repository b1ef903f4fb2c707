#include <csignal>
#include <ctime>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "kernel_file.h"
#include "kernel_tree.h"
#include "perprocmem_mon.h"
#include "process_mon.h"
#include "steady_time.h"

// What no tree of files can show.

namespace {

/// Goes on when this process has used another 30 ms.
int whenItHasBurned(int) {
  const auto until = std::clock() + CLOCKS_PER_SEC * 3 / 100;
  while (std::clock() < until) {
  }
  return 110;
}

TEST(RealKernel, ThreadsAreNoProcessesAndWhoWasKnownStaysWhenNoFileCanBeOpened) {
  process::PROCESS_MON monitor(whenItHasBurned, {::getpid()});
  procmem::PERPROCMEM_MON memoryMonitor;
  ASSERT_EQ(memoryMonitor.corvane_getPerProcessMemStats({::getpid()}).size(), 1U);
  std::promise<int> id;
  std::promise<void> end;
  std::thread thread([&] {
    id.set_value(int(::syscall(SYS_gettid)));
    end.get_future().wait();
  });
  const auto records = monitor.corvane_getProcessStats({::getpid(), id.get_future().get()});
  end.set_value();
  thread.join();
  ASSERT_EQ(records.size(), 1U);
  EXPECT_GT(records[0].usage, 0);
  EXPECT_LE(records[0].usage, double(std::thread::hardware_concurrency()));

  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none{.rlim_cur = 0, .rlim_max = limit.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  const auto blind = monitor.corvane_getProcessStats({::getpid()});
  const auto memory = memoryMonitor.corvane_getPerProcessMemStats({::getpid()});
  ::setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(blind.size(), 1U);
  ASSERT_EQ(memory.size(), 1U);
  EXPECT_GT(memory[0].uss, 0U);
}

TEST(RealKernel, MemoryOfAStoppedProcessIsWhatItsMappingsHold) {
  const int child = ::fork();
  if (child == 0) {
    const std::vector<char> memory(3 << 20, 'x');
    ::raise(SIGSTOP);
    ::_exit(memory[5]);
  }
  ASSERT_EQ(::waitpid(child, nullptr, WUNTRACED), child);
  procmem::PERPROCMEM_MON monitor;
  const auto records = monitor.corvane_getPerProcessMemStats({child});
  std::uint64_t resident = 0;
  std::ifstream smaps("/proc/" + std::to_string(child) + "/smaps");
  for (std::string line; std::getline(smaps, line);) {
    if (line.starts_with("Rss:")) resident += std::stoull(line.substr(4));
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  EXPECT_TRUE(monitor.corvane_getPerProcessMemStats({child}).empty());
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].parentPid, ::getpid());
  EXPECT_EQ(records[0].rss, resident);
  // What it shares with others, this test among them, changes from one look to the next.
  EXPECT_GE(records[0].uss, 3U << 10);
  EXPECT_GE(records[0].pss, records[0].uss);
  EXPECT_GE(records[0].rss, records[0].pss);
}

TEST(RealKernel, FilesAreReadWholeHoweverTheyArrive) {
  EXPECT_NE(KernelFile("/proc/self/smaps").read().value_or("").find("[stack]"), std::string::npos);
  const KernelTree tree;
  for (const std::size_t size : {0U, 4095U, 4096U, 4097U, 20'000U}) {
    const auto content = std::string(size, 'x') + '.';
    tree.write("/proc/file", content);
    KernelFile file("/proc/file");
    EXPECT_EQ(file.read(), content);
    EXPECT_EQ(file.readOnce(), content);
  }
}

TEST(RealKernel, NoSignalEndsASleepEarly) {
  struct sigaction action{}, before{};
  action.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &action, &before);
  const itimerval often{.it_interval = {0, 1000}, .it_value = {0, 1000}};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  const auto deadline = steadyNow() + std::chrono::milliseconds(20);
  sleepUntil(deadline);
  EXPECT_GE(steadyNow(), deadline);
  const itimerval never{};
  ::setitimer(ITIMER_REAL, &never, nullptr);
  ::sigaction(SIGALRM, &before, nullptr);
}

}  // namespace
