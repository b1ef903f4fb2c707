#include "plan.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <unistd.h>

#include "gauge.h"
#include "refusal.h"
#include "source_questions.h"
#include "suggestion.h"
#include "words.h"

namespace fs = std::filesystem;
using std::chrono::milliseconds;

namespace {

/// Room in a file name for what the longest result file's has before and after it.
constexpr std::size_t longestName = 200;

/// An option may be given several times; what it lists counts as if it were one list. An option
/// that is not given lists nothing.
std::vector<std::string> splitAtCommas(const std::vector<std::string>& lists) {
  return lists.empty() ? lists : split(joined(lists, ","), ",");
}

std::string checkedSource(const std::string& option, const std::string& word) {
  const auto sources = allSources();
  if (word.empty()) throw Refusal(option + ": a source is missing, beside a comma or altogether");
  if (std::ranges::find(sources, word) == sources.end())
    throw Refusal(option + ": there is no source '" + word + "'" + suggestion(word, sources));
  return word;
}

void chooseSources(const RecordOptions& options, Plan& plan) {
  const auto only = splitAtCommas(options.only), without = splitAtCommas(options.without);
  for (const auto& word : only)
    checkedSource("--only", word);
  for (const auto& word : without)
    checkedSource("--without", word);
  plan.sourcesNamed = !only.empty();
  for (const auto& word : allSources()) {
    const bool wanted = only.empty() || std::ranges::find(only, word) != only.end();
    if (wanted && std::ranges::find(without, word) == without.end()) plan.sources.push_back(word);
  }
  if (plan.sources.empty()) throw Refusal("--without: no source is left to record");
}

milliseconds parsePeriod(const std::string& text) {
  const auto period = parseDuration("--every", text);
  if (period.count() > std::numeric_limits<int>::max())
    throw Refusal("--every: " + text + " is too long");
  return period;
}

void choosePeriods(const RecordOptions& options, Plan& plan) {
  for (const auto& word : splitAtCommas(options.every)) {
    const auto equals = word.find('=');
    if (equals == word.npos) {
      plan.every = parsePeriod(word);
      continue;
    }
    const auto source = checkedSource("--every", word.substr(0, equals));
    if (std::ranges::find(plan.sources, source) == plan.sources.end())
      throw Refusal("--every: " + source + " is not recorded");
    plan.own[source] = parsePeriod(word.substr(equals + 1));
  }
  for (const auto& source : plan.sources) {
    if (plan.limit && plan.periodOf(source) > *plan.limit)
      throw Refusal("--for: shorter than the period of " + source + ", it would have no sample");
  }
}

void takeLabels(const RecordOptions& options, Plan& plan) {
  for (const auto& label : options.labels) {
    const auto equals = label.find('=');
    if (equals == label.npos || equals == 0)
      throw Refusal("--label: '" + label + "' is not KEY=VALUE");
    plan.labels[label.substr(0, equals)] = label.substr(equals + 1);
  }
}

void takeName(const RecordOptions& options, Plan& plan) {
  plan.name = options.name;
  if (!plan.name) return;
  if (plan.name->size() > longestName) {
    throw Refusal("--name: too long, " + std::to_string(plan.name->size()) + " bytes of at most " +
                  std::to_string(longestName));
  }
  if (plan.name->empty() || plan.name->find('/') != std::string::npos || *plan.name == "." ||
      *plan.name == "..")
    throw Refusal("--name: '" + *plan.name + "' cannot be the name of a folder");
}

bool isProgram(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

/// Where the shell would find the command; its statuses where it would not start it.
std::string findCommand(const std::string& word) {
  constexpr int cannotStart = 126;
  const Refusal notFound(word + ": there is no such command", 127);
  std::error_code error;
  if (word.find('/') != word.npos) {
    if (isProgram(word)) return word;
    if (fs::is_directory(word, error)) throw Refusal(word + ": is a folder", cannotStart);
    if (fs::exists(word, error)) throw Refusal(word + ": may not be executed", cannotStart);
    throw notFound;
  }
  const char* const value = std::getenv("PATH");
  for (const auto& folder : split(value != nullptr ? value : "/usr/bin:/bin", ":")) {
    const auto path = fs::path(folder.empty() ? "." : folder) / word;
    if (!word.empty() && isProgram(path)) return path;
  }
  throw notFound;
}

}  // namespace

std::vector<std::string> allSources() {
  std::vector<std::string> words;
  for (const auto& source : profilerSources)
    words.emplace_back(source.word);
  for (const auto& kind : gaugeKinds)
    words.emplace_back(kind.word);
  return words;
}

milliseconds Plan::periodOf(const std::string& source) const {
  const auto found = own.find(source);
  return found == own.end() ? every : found->second;
}

milliseconds Plan::longestPeriod() const {
  milliseconds longest{0};
  for (const auto& source : sources)
    longest = std::max(longest, periodOf(source));
  return longest;
}

milliseconds parseDuration(const std::string& option, const std::string& text) {
  constexpr struct {
    const char* unit;
    double milliseconds;
  } units[] = {{"ms", 1}, {"s", 1e3}, {"m", 60e3}, {"h", 3600e3}};
  constexpr double longest = 1e12;  // some 30 years
  const auto digits = text.find_first_not_of("0123456789.");
  const auto number = text.substr(0, digits);
  const auto unit = digits == text.npos ? "" : text.substr(digits);
  char* end = nullptr;
  const double value = std::strtod(number.c_str(), &end);
  if (number.empty() || *end != '\0' || unit.find_first_of("0123456789.") != unit.npos)
    throw Refusal(option + ": '" + text + "' is no time; write it as 90s, 10m, 2h or 500ms");
  for (const auto& known : units) {
    if (unit != known.unit) continue;
    const double time = value * known.milliseconds;
    if (time < 1) throw Refusal(option + ": '" + text + "' is less than a millisecond");
    if (time > longest) throw Refusal(option + ": '" + text + "' is too long");
    if (time != double(std::int64_t(time)))
      throw Refusal(option + ": '" + text + "' is no whole number of milliseconds");
    return milliseconds(std::int64_t(time));
  }
  if (unit.empty()) {
    throw Refusal(option + ": '" + text + "' has no unit; did you mean " + text +
                  (option == "--every" ? "ms?" : "s?"));
  }
  throw Refusal(option + ": '" + unit + "' is no unit of time; write it as 90s, 10m, 2h or 500ms");
}

fs::path findProfiler(const std::string& given) {
  std::error_code error;
  const auto own = fs::read_symlink("/proc/self/exe", error);
  const auto path = given.empty() ? own.parent_path() / "profiler_app" : fs::path(given);
  if (!isProgram(path)) throw Refusal(path.string() + ": there is no such profiler");
  return fs::absolute(path, error);
}

Plan makePlan(const RecordOptions& options) {
  Plan plan;
  if (!options.limit.empty()) plan.limit = parseDuration("--for", options.limit);
  chooseSources(options, plan);
  choosePeriods(options, plan);
  takeLabels(options, plan);
  takeName(options, plan);
  plan.output = options.output;
  plan.profiler = findProfiler(options.profiler);
  if (options.command) {
    if (options.command->empty()) throw Refusal("there is no command after --");
    plan.command = *options.command;
    plan.executable = findCommand(plan.command.front());
  }
  return plan;
}
