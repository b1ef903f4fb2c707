#include "process.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "process_mon.h"
#include "process_tree.h"

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

int goOn(int slot) {
  return slot == 7 ? 110 : 0;
}

std::vector<std::string> summary(const std::vector<process::procStats>& records) {
  std::vector<std::string> lines;
  for (const auto& r : records) {
    char line[160];
    std::snprintf(line, sizeof line, "%d %s %.2f+%.2f=%.2f %.2f", r.pid, r.name, r.userTime,
                  r.systemTime, r.totalTime, r.usage);
    lines.emplace_back(line);
  }
  return lines;
}

TEST(ProcessMonitor, MakesNamesSafe) {
  struct {
    std::string comm, cmdline;
    long long bytes;
    const char* name;
  } const cases[] = {
      {"surfaceflinger", "/system/bin/surfaceflinger\0-v\0"s, 1, "surfaceflinger"},
      {"d.process.acore", "android.process.acore\0\0\0"s, 1, "android.process.acore"},
      {"python3", "/opt/py/python3 -m http.server\0"s, 1, "python3"},
      {"init", "/sbin/init splash /x\0"s, 1, "init"},
      {"nginx", "nginx: master /usr/sbin/nginx -g   \0"s, 1, "nginx: master /usr/sbin/nginx -g"},
      {"kworker/0:1-events", "", 0, "kworker/0:1-events"},
      {"zombie) S 1 (", "", 0, "zombie) S 1 ("},
      {"no words", "\0-x\0"s, 1, "no words"},
      {"x", "/", 1, "/"},
      {"", "", 0, "_"},
      {"a\n1 (b) R", "", 0, "a_1 (b) R"},
      {"x", "q\"b\\c,d\xFF\te", 1, "q_b_c_d__e"},
      {"x", std::string(30, 'h') + std::string(30, 't'), 1,
       "hhhhhhhhhhhhhhhhhh..ttttttttttttttttttt"},
  };
  for (const auto& [comm, cmdline, bytes, name] : cases) {
    const KernelTree tree;
    writeProcess(tree, {.pid = 5, .comm = comm, .bytes = bytes}, cmdline);
    process::PROCESS_MON monitor(goOn);
    const auto records = monitor.corvane_getProcessStats();
    ASSERT_EQ(records.size(), 1U) << name;
    EXPECT_STREQ(records[0].name, name);
  }
}

TEST(ProcessMonitor, ListsWhoIsAlive) {
  const KernelTree tree{{"/proc/meminfo", ""}, {"/proc/44/empty", ""}, {"/proc/45/stat", "45 (x"}};
  writeProcess(tree, {.pid = 100, .comm = "b", .user = 150, .system = 25});
  writeProcess(tree, {.pid = 20, .comm = "a"});
  process::PROCESS_MON monitor(goOn, {});
  EXPECT_THAT(summary(monitor.corvane_getProcessStats()),
              ElementsAre("20 a 0.00+0.00=0.00 0.00", "100 b 1.50+0.25=1.75 0.00"));
  EXPECT_THAT(summary(monitor.corvane_getProcessStats({100, -1, 100, 0, 7, 44, 45, 100})),
              ElementsAre("100 b 1.50+0.25=1.75 0.00"));
  tree.remove("/proc/100");
  EXPECT_THAT(monitor.corvane_getProcessStats({100}), IsEmpty());
}

TEST(ProcessMonitor, StopsWhenTheCallbackSaysSo) {
  const KernelTree tree;
  writeProcess(tree, {.pid = 5});
  process::PROCESS_MON monitor([](int) { return 0; });
  EXPECT_THAT(monitor.corvane_getProcessStats(), IsEmpty());
  EXPECT_THAT(monitor.corvane_getProcessStats({5}), IsEmpty());
}

TEST(ProcessMonitor, ReadsOnlyWhoHasRun) {
  const KernelTree tree{{"/sys/devices/system/cpu/online", "0,2-3\n"}};
  const FakeClocks clocks;
  constexpr std::uint64_t hour = 3'600'000'000'000;
  constexpr long long future = 1LL << 60;
  clocks.used = {{5, 0}, {6, hour}, {7, hour}};
  writeProcess(tree, {.pid = 5, .comm = "idle", .user = 1});
  writeProcess(tree, {.pid = 6, .comm = "busy", .user = 1});
  writeProcess(tree, {.pid = 7, .comm = "old", .user = 1});
  process::PROCESS_MON monitor(goOn);
  clocks.used = {{5, 0}, {6, 2 * hour}, {7, 5}, {8, hour}, {9, hour}};
  writeProcess(tree, {.pid = 5, .comm = "unseen", .user = 200});
  writeProcess(tree, {.pid = 6, .comm = "exec", .user = 200});
  writeProcess(tree, {.pid = 7, .comm = "reused", .start = 20});
  writeProcess(tree, {.pid = 8, .comm = "born", .start = future});
  writeProcess(tree, {.pid = 9, .comm = "unwatched"});
  EXPECT_THAT(summary(monitor.corvane_getProcessStats()),
              ElementsAre("5 idle 0.01+0.00=0.01 0.00", "6 exec 2.00+0.00=2.00 3.00",
                          "7 reused 0.00+0.00=0.00 0.00", "8 born 0.00+0.00=0.00 3.00",
                          "9 unwatched 0.00+0.00=0.00 0.00"));
}

TEST(ProcessUsage, IsTheShareOfTheTimeThatPassed) {
  using namespace std::chrono_literals;
  const SteadyTime start{5s};
  const CpuReading before{.used = 1'000'000, .at = start};
  EXPECT_DOUBLE_EQ(usageBetween(before, {.used = 26'000'000, .at = start + 50ms}, 4), 0.5);
  EXPECT_DOUBLE_EQ(usageBetween(before, {.used = 151'000'000, .at = start + 50ms}, 4), 3);
  EXPECT_DOUBLE_EQ(usageBetween(before, {.used = 151'000'000, .at = start + 50ms}, 2), 2);
  EXPECT_EQ(usageBetween(before, {.used = 999'999, .at = start + 50ms}, 4), 0);
  EXPECT_EQ(usageBetween(before, {.used = 2'000'000, .at = start}, 4), 0);
}

int burner = 0;

/// Goes on when the burner has used another 30 ms.
int whenItHasBurned(int) {
  const auto used = [] { return processClock()(burner).value_or(UINT64_MAX); };
  const auto until = used() + 30'000'000;
  while (used() < until)
    ::sched_yield();
  return 110;
}

TEST(ProcessMonitor, SeesARealProcessWithAHostileName) {
  int start[2];
  ASSERT_EQ(::pipe(start), 0);
  burner = ::fork();
  if (burner == 0) {
    char byte = 0;
    if (::read(start[0], &byte, 1) != 1) ::_exit(1);
    ::execl("/bin/sh", "a,\"b\n) R 1 (c", "-c", "while :; do :; done", nullptr);
    ::_exit(1);
  }
  process::PROCESS_MON monitor(whenItHasBurned, {burner});
  ASSERT_EQ(::write(start[1], "x", 1), 1);
  std::atomic<int> thread = 0;
  std::atomic<bool> done = false;
  std::thread other([&] {
    thread = int(::syscall(SYS_gettid));
    while (!done)
      std::this_thread::yield();
  });
  while (thread == 0)
    std::this_thread::yield();
  const auto records = monitor.corvane_getProcessStats({burner, thread});
  done = true;
  other.join();
  ASSERT_EQ(records.size(), 1U);
  EXPECT_STREQ(records[0].name, "a__b_) R 1 (c");
  EXPECT_GT(records[0].usage, 0);
  EXPECT_LE(records[0].usage, double(std::thread::hardware_concurrency()));

  // Where no file can be opened any more, who was known stays.
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none{.rlim_cur = 0, .rlim_max = limit.rlim_max};
  ::setrlimit(RLIMIT_NOFILE, &none);
  const auto blind = monitor.corvane_getProcessStats({burner});
  ::setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(blind.size(), 1U);

  ::kill(burner, SIGKILL);
  ::waitpid(burner, nullptr, 0);
  process::PROCESS_MON afterwards(goOn, {burner});
  EXPECT_THAT(afterwards.corvane_getProcessStats({burner}), IsEmpty());
}

}  // namespace
