#include "ask_machine.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <signal.h>
#include <span>
#include <sstream>
#include <unistd.h>

#include "gauge.h"
#include "monitor_library.h"
#include "question.h"
#include "source_questions.h"
#include "version.h"

namespace {

constexpr std::chrono::seconds patience{3};

/// Written on both outputs ahead of what is asked, so that each text is known to be of that.
constexpr char announcement = '\x1e';

void announce(std::string_view word) {
  for (FILE* const output : {stdout, stderr}) {
    std::fprintf(output, "%c%.*s\n", announcement, int(word.size()), word.data());
    std::fflush(output);
  }
}

/// What the text says of the word; nothing where that was not asked.
std::optional<std::string> partOf(const std::string& text, std::string_view word) {
  const auto begin = announcement + std::string(word) + "\n";
  const auto at = text.find(begin);
  if (at == std::string::npos) return std::nullopt;
  const auto from = at + begin.size();
  return text.substr(from, text.find(announcement, from) - from);
}

/// The lines without "corvane: ", as one line.
std::string asOneLine(const std::string& lines) {
  constexpr std::string_view prefix = "corvane: ";
  std::istringstream stream(lines);
  std::string text;
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with(prefix)) line.erase(0, prefix.size());
    if (!line.empty()) text += (text.empty() ? "" : "; ") + line;
  }
  return text;
}

SourceState stateOf(const ProfilerSource& source, const Question& question) {
  SourceState state;
  state.word = source.word;
  state.what = source.what;
  state.counted = source.counted;
  state.said = asOneLine(partOf(question.errors(), source.word).value_or(""));
  // A library's own output may stand before the answer.
  const auto text = partOf(question.answer(), source.word).value_or("");
  const auto at = text.rfind("answer ");
  int there = 0;
  state.answered = at != std::string::npos &&
                   std::sscanf(text.c_str() + at, "answer %d %d", &there, &state.count) == 2;
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

/// The word of what the library says of itself.
constexpr std::string_view itself = "library";

/// `asked`: a source was, so that the library is one that fits.
void tellOfLibrary(const Question& question, bool asked, MachineSources& machine) {
  if (!asked && question.ending().status.value_or(0) != 0)
    machine.failure = asOneLine(partOf(question.errors(), itself).value_or(question.errors()));
  std::istringstream lines(partOf(question.answer(), itself).value_or(""));
  std::getline(lines, machine.fileOfLibrary);
  std::getline(lines, machine.versionOfLibrary);
}

/// Asks one source after the other in a process that loads the library once. Those that are not
/// told of then were not asked: the one before them took the process down.
void askSome(const std::filesystem::path& profilerFolder,
             std::span<const ProfilerSource* const> sources, bool thorough,
             MachineSources& machine) {
  const bool isFirst = machine.sources.empty();
  Question question([&] {
    const auto file = useMonitorLibrary(profilerFolder);
    if (isFirst) {
      announce(itself);
      std::printf("%s\n", file.c_str());
      printLibraryVersion();
    }
    for (const auto* source : sources) {
      announce(source->word);
      const auto answer = source->ask(thorough);
      std::printf("\nanswer %d %d\n", answer.there ? 1 : 0, answer.count);
    }
  });
  question.finish(std::chrono::steady_clock::now() + patience);
  const bool asked = !sources.empty() && partOf(question.answer(), sources.front()->word);
  if (isFirst) tellOfLibrary(question, asked, machine);
  for (const auto* source : sources) {
    const auto state = stateOf(*source, question);
    // Who is at fault is only sure of the first one; and it has had all of the time.
    if (state.answered || source == sources.front()) machine.sources.push_back(state);
    if (!state.answered) break;
  }
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
  std::vector<const ProfilerSource*> wantedSources;
  for (const auto& source : profilerSources)
    if (wanted(words, source.word)) wantedSources.push_back(&source);
  do {
    const auto left = std::span(wantedSources).subspan(machine.sources.size());
    askSome(profilerFolder, left, thorough, machine);
    if (!machine.failure.empty()) return machine;
  } while (machine.sources.size() < wantedSources.size());
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
