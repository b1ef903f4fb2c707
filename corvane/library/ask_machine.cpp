#include "ask_machine.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <signal.h>
#include <sstream>
#include <unistd.h>

#include "gauge.h"
#include "monitor_library.h"
#include "question.h"
#include "source_questions.h"
#include "version.h"

namespace {

constexpr std::chrono::seconds patience{3};

SourceState stateOf(const ProfilerSource& source, const Question& question) {
  SourceState state;
  state.word = source.word;
  state.what = source.what;
  state.counted = source.counted;
  state.said = question.said();
  // A library's own output may stand before the answer.
  const auto at = question.answer().rfind("answer ");
  int there = 0;
  state.answered =
      at != std::string::npos &&
      std::sscanf(question.answer().c_str() + at, "answer %d %d", &there, &state.count) == 2;
  state.there = there != 0;
  if (state.there) return state;
  const auto& ending = question.ending();
  if (!state.answered && ending.signal) {
    state.said = *ending.signal == SIGKILL
                     ? "the monitor library does not answer"
                     : std::string("the monitor library crashed: ") + ::strsignal(*ending.signal);
  } else if (state.said.empty()) {
    state.said = "the monitor library has none";
  }
  return state;
}

SourceState stateOf(const GaugeKind& kind) {
  SourceState state;
  state.word = kind.word;
  state.what = kind.what;
  state.counted = "values";
  state.count = int(kind.make()->columns().size());
  state.there = state.count > 0;
  if (!state.there) state.said = kind.missing;
  return state;
}

bool wanted(const std::vector<std::string>& words, std::string_view word) {
  return std::ranges::find(words, word) != words.end();
}

}  // namespace

MachineSources askMachine(const std::filesystem::path& profilerFolder,
                          const std::vector<std::string>& words, bool thorough) {
  MachineSources machine;
  std::vector<std::pair<const ProfilerSource*, Question>> questions;
  Question library([&] {
    std::printf("%s\n", useMonitorLibrary(profilerFolder).c_str());
    printLibraryVersion();
  });
  for (const auto& source : profilerSources) {
    if (!wanted(words, source.word)) continue;
    questions.emplace_back(&source, Question([&] {
      useMonitorLibrary(profilerFolder);
      const auto answer = source.ask(thorough);
      std::printf("\nanswer %d %d\n", answer.there ? 1 : 0, answer.count);
    }));
  }
  const auto until = std::chrono::steady_clock::now() + patience;
  library.finish(until);
  std::istringstream lines(library.answer());
  std::getline(lines, machine.fileOfLibrary);
  std::getline(lines, machine.versionOfLibrary);
  if (library.ending().status.value_or(0) != 0) machine.failure = library.said();
  for (auto& [source, question] : questions) {
    question.finish(until);
    machine.sources.push_back(stateOf(*source, question));
  }
  for (const auto& kind : gaugeKinds)
    if (wanted(words, kind.word)) machine.sources.push_back(stateOf(kind));
  return machine;
}

std::string programVersion(const std::filesystem::path& profiler) {
  Question question([&] { ::execl(profiler.c_str(), profiler.c_str(), "--version", nullptr); });
  question.finish(std::chrono::steady_clock::now() + patience);
  constexpr std::string_view label = "Application Version : ";
  const auto at = question.answer().find(label);
  if (at == std::string::npos) return "";
  const auto version = question.answer().substr(at + label.size());
  return version.substr(0, version.find('\n'));
}
