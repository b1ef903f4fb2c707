#include "closing_lines.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "message.h"
#include "run_summary.h"

namespace {

std::string seconds(double time) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f s", time);
  return text.data();
}

std::string length(const runs::RunSummary& run) {
  std::uint64_t samples = 0;
  for (const auto& source : run.sources)
    samples += source.samples;
  return seconds(run.last - std::min(run.first, 0.0)) + ", " + std::to_string(samples) +
         " samples of " + std::to_string(run.sources.size()) +
         (run.sources.size() == 1 ? " source" : " sources");
}

std::string busiest(const runs::RunSummary& run) {
  constexpr std::size_t most = 3;
  constexpr double least = 0.05;  // s, what is not shown as 0.0
  bool measured = false;
  std::string text;
  for (const auto& process : run.processes) {
    measured = measured || process.cpu.count > 0;
    if (process.cpu.count == 0 || process.cpuSeconds < least) continue;
    text += (text.empty() ? "" : ", ") + process.name + " [" + std::to_string(process.pid) + "] " +
            seconds(process.cpuSeconds);
    if (std::size_t(std::ranges::count(text, '[')) == most) break;
  }
  if (!measured) return "no process was measured";
  return text.empty() ? "no process used 0.1 s of processor time" : "most processor time: " + text;
}

/// Whether nobody wants to wait any longer.
bool isInterrupted(const Signals& signals) {
  while (const int signal = signals.next())
    if (signal != SIGCHLD) return true;
  return false;
}

}  // namespace

void sayClosingLines(const std::filesystem::path& runFolder, const Signals& signals) {
  message("recorded " + runFolder.string());
  bool interrupted = false;
  const auto run = runs::readRun(runFolder, {}, {}, [&](double) {
    interrupted = interrupted || isInterrupted(signals);
    return !interrupted;
  });
  if (interrupted) {
    message("see corvane show " + runFolder.string());
    return;
  }
  message(length(run));
  message(busiest(run));
}
