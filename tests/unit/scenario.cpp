#include "scenario.h"

#include <cerrno>
#include <fstream>
#include <gtest/gtest.h>

#include "kernel_tree.h"
#include "notice.h"

namespace {

int waitResult = ETIMEDOUT;
int waitedSlot = -1;

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

int lastSlotWaitedFor() {
  return waitedSlot;
}

Scenario::Scenario(const std::string& file) {
  std::ifstream input(file, std::ios::binary);
  for (std::string line; std::getline(input, line);) {
    const auto mark = line.substr(0, 3);
    if (mark == "===" || mark == "---" || mark == ">>>") {
      steps.push_back({mark, line.substr(4), ""});
    } else {
      (steps.empty() ? about : steps.back().text) += line + "\n";
    }
  }
}

void Scenario::play(const std::function<Sampler()>& start) const {
  const KernelTree tree;
  Sampler sample;
  forgetNotices();
  testing::internal::CaptureStderr();
  for (const auto& step : steps) {
    if (step.mark != ">>>") {
      change(tree, step);
    } else if (step.target == "start") {
      sample = start();
    } else if (step.target == "errors") {
      EXPECT_EQ(testing::internal::GetCapturedStderr(), step.text) << about;
      testing::internal::CaptureStderr();
    } else {
      waitResult = step.target == "stop" ? 0 : ETIMEDOUT;
      EXPECT_EQ(sample(), step.text) << about << "step " << &step - steps.data() + 1;
    }
  }
  testing::internal::GetCapturedStderr();
}
