#include "record.h"

#include <algorithm>
#include <fcntl.h>
#include <memory>
#include <system_error>
#include <unistd.h>

#include "ask_machine.h"
#include "clocks.h"
#include "closing_lines.h"
#include "estimate.h"
#include "gauge.h"
#include "machine.h"
#include "metadata_store.h"
#include "recording.h"
#include "refusal.h"
#include "report.h"

namespace {

/// The sources that are recorded: of those asked for, the ones that are here. One that is named is
/// recorded even so where the library crashed or hung over the question, since it may answer later.
std::vector<SourceState> chooseSources(const Plan& plan, const MachineSources& machine,
                                       runs::Metadata& metadata) {
  if (!machine.failure.empty())
    throw Refusal(plan.profiler.string() + ": " + machine.failure, Status::profilerFailed);
  std::vector<SourceState> chosen;
  for (const auto& source : machine.sources) {
    if (!source.there) {
      metadata.missing.push_back({.source = source.word, .reason = source.said});
      if (plan.sourcesNamed) message(source.word + " is not here: " + source.said);
      if (!plan.sourcesNamed || source.answered) continue;
    }
    metadata.sources.push_back(
        {.source = source.word, .milliseconds = int(plan.periodOf(source.word).count())});
    chosen.push_back(source);
  }
  if (chosen.empty()) throw Refusal("none of the sources is here; see corvane sources");
  return chosen;
}

bool isGauge(const std::string& word) {
  return std::ranges::find(gaugeKinds, word, &GaugeKind::word) != gaugeKinds.end();
}

std::vector<std::string> profilerArguments(const Plan& plan, const RecordOptions& options,
                                           const std::vector<SourceState>& sources,
                                           const std::string& suffix) {
  const bool ownEnd = plan.limit && plan.limit->count() % 1000 == 0;
  std::vector<std::string> arguments{plan.profiler.string(),
                                     "--file",
                                     suffix,
                                     "--qtimer",
                                     "--total-time",
                                     ownEnd ? std::to_string(plan.limit->count() / 1000) : "0",
                                     "--sample-time",
                                     std::to_string(plan.every.count())};
  if (options.json) arguments.emplace_back("--json");
  if (options.csv) arguments.emplace_back("--csv");
  for (const auto& source : sources) {
    if (isGauge(source.word)) continue;
    arguments.push_back("--" + source.word);
    if (!plan.own.contains(source.word)) continue;
    arguments.push_back("--" + source.word + "-sample-time");
    arguments.push_back(std::to_string(plan.periodOf(source.word).count()));
  }
  return arguments;
}

/// A descriptor that the caller has closed would become a file of the recording. The command gets
/// it closed, as it was.
void occupyClosedDescriptors() {
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (::fcntl(fd, F_GETFD) < 0) ::open("/dev/null", O_RDWR | O_CLOEXEC);
}

int recordRun(const RecordOptions& options) {
  const auto plan = makePlan(options);
  RunPlace place(plan.output, plan.name);
  auto signals = std::make_unique<Signals>();
  runs::Metadata metadata;
  const auto machine = askMachine(plan.profiler.parent_path(), plan.sources, false);
  const auto sources = chooseSources(plan, machine, metadata);
  warnOfFullDisk(plan, sources);

  metadata.suffix = place.suffix();
  metadata.host = describeHost();
  metadata.counterHz = counterHz();
  metadata.labels = plan.labels;
  if (plan.limit) metadata.limit = double(plan.limit->count()) * 1e-3;
  auto arguments = profilerArguments(plan, options, sources, place.suffix());
  metadata.profiler = {.path = plan.profiler.string(),
                       .arguments = arguments,
                       .version = {},
                       .monitorLibrary = machine.versionOfLibrary + ", " + machine.fileOfLibrary,
                       .ending = {}};

  Recording recording(plan, place, *signals, std::move(arguments), std::move(metadata));
  recording.run();
  if (!options.quiet && place.run() >= 0) sayClosingLines(place.runFolder(), *signals);
  signals.reset();  // from here on Ctrl-C ends this program as any other
  if (options.report && place.run() >= 0) {
    ReportOptions page;
    page.runs = {place.runFolder()};
    page.output = place.runFolder().string() + ".html";
    report(page);
  }
  return recording.status();
}

}  // namespace

int record(const RecordOptions& options) {
  occupyClosedDescriptors();
  try {
    if (options.mark && options.mark->empty()) throw Refusal("--mark: the text is empty");
    if (options.mark && options.command)
      throw Refusal("--mark: records nothing, so that there is no command to stand after --");
    if (options.mark) return markRecording(options.output, options.name, *options.mark);
    return recordRun(options);
  } catch (const Refusal& refusal) {
    message(refusal.what());
    return refusal.status;
  } catch (const std::system_error& error) {
    message(std::string("cannot record: ") + error.what());
    return Status::profilerFailed;
  }
}
