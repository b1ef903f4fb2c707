#include "procmem.h"

#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "perprocmem_mon.h"
#include "process_tree.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const char* const rollup =
    "5500-7ffd ---p 00000000 00:00 0 [rollup]\nRss:       900 kB\nPss:     500 kB\n"
    "Pss_Dirty: 7 kB\nShared_Clean: 7 kB\nPrivate_Clean:   30 kB\nPrivate_Dirty:  170 kB\n"
    "Swap: 5 kB\n";

std::vector<std::string> summary(const std::vector<procmem::procMemStats>& records) {
  std::vector<std::string> lines;
  for (const auto& r : records) {
    lines.push_back(std::to_string(r.pid) + " " + std::to_string(r.parentPid) + " " + r.name);
    for (const auto kb : {r.vss, r.pss, r.rss, r.uss})
      lines.back() += " " + std::to_string(kb);
  }
  return lines;
}

TEST(ProcessMemory, IsReadFromWhatTheKernelAllows) {
  const KernelTree tree{{"/proc/3/smaps_rollup", rollup},   {"/proc/4/smaps_rollup/denied", ""},
                        {"/proc/4/statm", "300 20 5 1"},    {"/proc/5/statm", "400 30"},
                        {"/proc/6/smaps_rollup", rollup},   {"/proc/8/smaps_rollup", rollup},
                        {"/proc/9/statm", "0 0 0 0 0 0 0"}, {"/proc/44/empty", ""}};
  writeProcess(tree, {.pid = 3, .parent = 0}, "/sbin/init");
  writeProcess(tree, {.pid = 4, .comm = "a\nb"});
  writeProcess(tree, {.pid = 5, .comm = "no rollup"});
  writeProcess(tree, {.pid = 6, .comm = "kernel thread", .bytes = 0});
  writeProcess(tree, {.pid = 7, .comm = "vanishes"});
  writeProcess(tree, {.pid = 9, .comm = "has just exited"});
  const auto page = ::sysconf(_SC_PAGESIZE) / 1024;
  const auto pages = [&](int count) { return " " + std::to_string(count * page); };
  const std::string denied = "4 1 a_b" + pages(300) + " 0" + pages(20) + " 0";
  procmem::PERPROCMEM_MON monitor;
  EXPECT_THAT(monitor.corvane_getPerProcessMemStats(), testing::SizeIs(3));
  EXPECT_THAT(summary(monitor.corvane_getPerProcessMemStats()),
              ElementsAre("3 0 init 1024 500 900 200", denied,
                          "5 1 no rollup" + pages(400) + " 0" + pages(30) + " 0"));
  EXPECT_THAT(summary(monitor.corvane_getPerProcessMemStats({4, 44, 4, -4, 6})),
              ElementsAre(denied));
  EXPECT_THAT(monitor.corvane_getPerProcessMemStats({6, 7, 99}), IsEmpty());
}

TEST(ProcessMemory, FollowsTheParentOfAProcessThatDoesNotRun) {
  const KernelTree tree{{"/proc/3/smaps_rollup", rollup}, {"/proc/7/smaps_rollup", rollup}};
  const FakeClocks clocks;
  clocks.used = {{3, 50}, {7, 50}};
  writeProcess(tree, {.pid = 3, .parent = 7, .comm = "child", .start = 20});
  writeProcess(tree, {.pid = 7, .comm = "parent"});
  procmem::PERPROCMEM_MON monitor;
  monitor.corvane_getPerProcessMemStats();
  writeProcess(tree, {.pid = 3, .parent = 2, .start = 20});
  EXPECT_EQ(monitor.corvane_getPerProcessMemStats()[0].parentPid, 7) << "read although idle";
  clocks.used[7] = 90;
  writeProcess(tree, {.pid = 7, .comm = "zombie", .bytes = 0});
  EXPECT_EQ(monitor.corvane_getPerProcessMemStats()[0].parentPid, 2);
}

TEST(ProcessMemory, OfAStoppedProcessIsWhatItsMappingsHold) {
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
  std::ifstream smaps(folderOf(child) + "/smaps");
  for (std::string line; std::getline(smaps, line);) {
    if (line.starts_with("Rss:")) resident += std::stoull(line.substr(4));
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  ASSERT_EQ(records.size(), 1U);
  EXPECT_EQ(records[0].parentPid, ::getpid());
  EXPECT_EQ(records[0].rss, resident);
  // What it shares with others, this test among them, changes from one look to the next.
  EXPECT_GE(records[0].uss, 3U << 10);
  EXPECT_GE(records[0].pss, records[0].uss);
  EXPECT_GE(records[0].rss, records[0].pss);
}

}  // namespace
