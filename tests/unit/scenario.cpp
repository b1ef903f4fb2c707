#include "scenario.h"

#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <utility>

#include "kernel_tree.h"
#include "notice.h"

namespace {

int waitResult = ETIMEDOUT;
int waitedSlot = -1;

std::string withBytes(std::string line) {
  for (auto at = line.find("\\x"); at != line.npos; at = line.find("\\x", at + 1))
    line.replace(at, 4, 1, char(std::stoi(line.substr(at + 2, 2), nullptr, 16)));
  return line;
}

/// Read calls of this thread until now.
std::uint64_t readCalls() {
  std::ifstream counts("/proc/thread-self/io");
  std::uint64_t calls = 0;
  for (std::string name; counts >> name >> calls && name != "syscr:";) {
  }
  return calls;
}

std::uint64_t callsSince(std::uint64_t before) {
  return readCalls() - before;
}

void change(const KernelTree& tree, const Scenario::Step& step) {
  const auto arrow = step.target.find(" -> ");
  if (step.mark == "---") {
    tree.remove(step.target);
  } else if (arrow != std::string::npos) {
    tree.link(step.target.substr(0, arrow), step.target.substr(arrow + 4));
  } else {
    tree.write(step.target, step.text);
  }
}

}  // namespace

int scenarioWait(int slot) {
  waitedSlot = slot;
  return waitResult;
}

int slotWaitedFor() {
  return std::exchange(waitedSlot, -1);
}

Scenario::Scenario(const std::string& file) {
  std::ifstream input(file, std::ios::binary);
  for (std::string line; std::getline(input, line);) {
    const auto mark = line.substr(0, 3);
    if (mark == "###" || mark == "===" || mark == "---" || mark == "+++" || mark == ">>>") {
      steps.push_back({mark, line.substr(4), ""});
    } else {
      (steps.empty() ? about : steps.back().text) += withBytes(line) + "\n";
    }
  }
}

void Scenario::play(const std::function<Sampler(const Pids&)>& start) const {
  KernelTree tree;
  Sampler sample;
  std::uint64_t calls = 0;
  std::chrono::milliseconds between(1);
  std::string remark;
  forgetNotices();
  testing::internal::CaptureStderr();
  for (const auto& step : steps) {
    std::istringstream words(step.target);
    std::string what;
    words >> what;
    const Pids pids(std::istream_iterator<int>(words), {});
    if (step.mark == "###") {
      remark = step.target;
    } else if (step.mark == "+++") {
      between = std::chrono::milliseconds(std::stoi(step.target));
    } else if (step.mark != ">>>") {
      change(tree, step);
    } else if (what == "start") {
      sample = start(pids);
    } else if (what == "errors") {
      EXPECT_EQ(testing::internal::GetCapturedStderr(), step.text) << about;
      testing::internal::CaptureStderr();
    } else if (what == "reads") {
      EXPECT_EQ(std::to_string(calls) + "\n", step.text) << about << remark;
    } else {
      tree.pass(std::exchange(between, std::chrono::milliseconds(1)));
      waitResult = what == "stop" ? 0 : ETIMEDOUT;
      const auto ownCalls = callsSince(readCalls());
      const auto before = readCalls();
      const auto text = sample(pids);
      calls = callsSince(before) - ownCalls;
      EXPECT_EQ(text, step.text) << about << remark << ", step " << &step - steps.data();
    }
  }
  testing::internal::GetCapturedStderr();
}
