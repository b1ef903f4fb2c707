#include "recording.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <signal.h>
#include <sys/prctl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "ask_machine.h"
#include "clocks.h"
#include "console_text.h"
#include "metadata_store.h"
#include "refusal.h"
#include "words.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr auto lookPeriod = 2ms;          // at the console of a profiler that is starting
constexpr auto patientLookPeriod = 20ms;  // of one that is ending
constexpr auto startPatience = 10s;
constexpr auto stopPatience = 5s;  // beyond the longest period
constexpr auto skipPatience = 1s;
constexpr auto sameEvent = 300ms;  // two signals within it are one request

constexpr std::string_view startedText = "Started all threads\n";
constexpr std::string_view profiledText = "Profiling done\n";

bool isWholeSeconds(std::chrono::milliseconds time) {
  return time.count() % 1000 == 0;
}

/// Relative folders of it would be others in the folder where the profiler runs.
void makeLibraryPathAbsolute() {
  const char* const value = std::getenv("LD_LIBRARY_PATH");
  if (value == nullptr || *value == '\0') return;
  auto folders = split(value, ":;");
  for (auto& folder : folders) {
    std::error_code error;
    folder = std::filesystem::absolute(folder.empty() ? "." : folder, error).string();
  }
  ::setenv("LD_LIBRARY_PATH", joined(folders, ":").c_str(), 1);
}

}  // namespace

Recording::Recording(const Plan& plan, RunPlace& place, const Signals& signals,
                     std::vector<std::string> profilerArguments, runs::Metadata metadata)
    : plan_(plan),
      place_(place),
      signals_(signals),
      arguments_(std::move(profilerArguments)),
      metadata_(std::move(metadata)) {}

void Recording::run() {
  startProfiler();
  while (goesOn()) {
    signals_.wait(nextStep(Clock::now()));
    while (const int signal = signals_.next())
      takeSignal(signal, Clock::now());
    step(Clock::now());
  }
  complete();
}

bool Recording::goesOn() {
  const bool profiles = profiler_.runs();
  metadata_.profiler.ending = profiler_.ending();
  // The step that sees the end of what has ended comes first.
  return profiles || command_.runs() || phase_ != Phase::ending;
}

/// In a process group of its own, so that a terminal's signals do not reach it. When this process
/// is killed, the kernel tells it to stop.
void Recording::startProfiler() {
  const auto parent = ::getpid();
  metadata_.start = instantNow();
  makeLibraryPathAbsolute();
  profiler_ = Child::start(plan_.profiler, arguments_, [&] {
    signals_.restore();
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGINT);
    const int nothing = ::open("/dev/null", O_RDONLY);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(place_.log(), STDOUT_FILENO);
    ::dup2(place_.log(), STDERR_FILENO);
    if (::getppid() != parent || ::fchdir(place_.output()) != 0) ::_exit(127);
  });
  phaseStart_ = Clock::now();
}

/// In this process's group: the terminal is its, and Ctrl-C reaches it as it would without us.
void Recording::startCommand() {
  if (plan_.command.empty()) return;
  runs::Command command{.arguments = plan_.command, .pid = 0, .ending = {}};
  group_ = std::make_unique<GroupListener>();
  command.start = instantNow();
  try {
    command_ = Child::start(plan_.executable, plan_.command, [&] { signals_.restore(); });
    command.pid = command_.pid();
  } catch (const std::system_error& error) {
    message(plan_.command.front() + ": " + error.code().message());
    command.ending.status = error.code() == std::errc::no_such_file_or_directory ? 127 : 126;
    command.end = command.start;
    askToStop(Clock::now());
  }
  metadata_.command = command;
}

void Recording::startGauges() {
  const auto now = Clock::now();
  for (const auto& kind : gaugeKinds) {
    if (std::ranges::find(metadata_.sources, kind.word, &runs::SourcePeriod::source) ==
        metadata_.sources.end())
      continue;
    auto gauge = kind.make();
    if (gauge->columns().empty()) continue;
    const auto period = plan_.periodOf(std::string(kind.word));
    const auto name = std::string(kind.word) + "profiler_" + place_.suffix() + ".txt";
    gauges_.push_back(
        std::make_unique<GaugeFile>(std::move(gauge), place_.run(), name, period, now));
  }
}

void Recording::sampleGauges(Time now) {
  for (const auto& gauge : gauges_)
    if (gauge->due() <= now) gauge->sample();
}

Recording::Time Recording::nextStep(Time now) const {
  if (phase_ == Phase::starting) return now + lookPeriod;
  auto next = now + 1h;  // or a signal
  if (phase_ == Phase::ending)
    return metadata_.profiler.ending.isOver() ? next : now + patientLookPeriod;
  for (const auto& gauge : gauges_)
    next = std::min(next, gauge->due());
  return limit_ ? std::min(next, *limit_) : next;
}

void Recording::step(Time now) {
  noteCommandEnd();
  if (metadata_.command && metadata_.command->end) askToStop(now);
  if (phase_ == Phase::starting) stepWhileStarting(now);
  if (phase_ == Phase::sampling) stepWhileSampling(now);
  if (phase_ == Phase::ending) stepWhileEnding(now);
}

void Recording::noteCommandEnd() {
  if (!metadata_.command || metadata_.command->end || command_.runs()) return;
  metadata_.command->ending = command_.ending();
  metadata_.command->end = instantNow();
}

void Recording::stepWhileStarting(Time now) {
  const bool runs = profiler_.runs();
  if (consoleShows(startedText) && place_.settle()) {
    phase_ = Phase::sampling;
    if (plan_.limit) limit_ = now + *plan_.limit;
    startGauges();
    if (!stopAsked_) startCommand();
    changeMetadata(place_.base(), place_.suffix(), [&](auto& stored) { stored = metadata_; });
    if (stopAsked_) profiler_.signal(SIGINT);
  } else if (!runs) {
    fail("the profiler could not start the run");
    phase_ = Phase::ending;
  } else if (now - phaseStart_ > startPatience) {
    fail("the profiler does not start to sample");
    profiler_.signal(SIGKILL);
    phase_ = Phase::ending;
  }
}

void Recording::stepWhileSampling(Time now) {
  const bool limitReached = limit_ && now >= *limit_;
  if (!stopAsked_ && !limitReached && profiler_.runs()) {
    sampleGauges(now);
    return;
  }
  // At the limit in whole seconds the profiler ends by itself, after the sample that is due.
  if (limitReached && !stopAsked_ && plan_.limit && isWholeSeconds(*plan_.limit)) stopAsked_ = now;
  sampleGauges(now);
  askToStop(now);
  phase_ = Phase::ending;
  phaseStart_ = now;
}

void Recording::stepWhileEnding(Time now) {
  const bool runs = profiler_.runs();
  if (!profiled_ && consoleShows(profiledText)) {
    profiled_ = true;
    metadata_.end = instantNow();
  }
  if (!runs) {
    judge(profiler_.ending());
  } else if (!profiled_ && now - phaseStart_ > plan_.longestPeriod() + stopPatience) {
    fail("the profiler does not stop");
    profiler_.signal(SIGKILL);
  } else if (skipAsked_ && (profiled_ || now - *skipAsked_ > skipPatience)) {
    profiler_.signal(SIGKILL);
  }
}

void Recording::judge(const runs::Ending& ending) {
  if (skipAsked_ || (profiled_ && ending.status == 0)) return;
  fail(ending.signal
           ? std::string("the profiler was ended by a signal: ") + ::strsignal(*ending.signal)
           : "the profiler ended with status " + std::to_string(ending.status.value_or(-1)) +
                 (profiled_ ? "" : " before its time"));
}

/// What the terminal told the whole group is the command's own affair, the first time: it may have
/// a use for Ctrl-C. Of what this process alone was told the command has to know.
bool Recording::leaveToCommand(int signal) {
  if (!command_.runs()) return false;
  if (!group_->heard(signal)) {
    command_.signal(signal);
    return false;
  }
  const bool ofKeyboard = signal == SIGINT || signal == SIGQUIT;
  return ofKeyboard && !std::exchange(commandInterrupted_, true);
}

void Recording::takeSignal(int signal, Time now) {
  if (signal == SIGCHLD) return;
  if (firstSignal_ == 0) firstSignal_ = signal;
  if (leaveToCommand(signal)) return;
  const bool again = stopAsked_ && now - *stopAsked_ > sameEvent;
  if (again && signal != SIGHUP && !skipAsked_) {
    skipAsked_ = now;
    message("the conversions are left out; corvane convert makes them");
  }
  askToStop(now);
}

void Recording::askToStop(Time now) {
  if (stopAsked_) return;
  stopAsked_ = now;
  // One that is still starting would die of it.
  if (phase_ != Phase::starting) profiler_.signal(SIGINT);
}

/// Once: what follows from it is no news.
void Recording::fail(const std::string& reason) {
  if (std::exchange(failed_, true)) return;
  metadata_.faults.push_back(reason);
  const auto lines = lastLines(place_.logText(), 5);
  message(reason + (lines.empty() ? "" : "; its last lines:"));
  for (const auto& line : lines)
    message("  " + line);
}

bool Recording::consoleShows(std::string_view text) {
  const auto fresh = place_.logText(consoleRead_);
  consoleRead_ += fresh.size();
  console_ += fresh;
  const auto at = console_.find(text);
  // What may be the beginning of a text stays.
  const auto done = at == console_.npos ? console_.size() - std::min(console_.size(), text.size())
                                        : at + text.size();
  console_.erase(0, done);
  return at != console_.npos;
}

/// Those that a killed profiler was writing, and those that are whole, since nobody can tell.
void Recording::dropConversions() const {
  ::unlinkat(place_.run(), "ProfilerOutput.json", 0);
  for (const auto& name : namesIn(place_.run()))
    if (name.ends_with("_" + place_.suffix() + ".csv")) ::unlinkat(place_.run(), name.c_str(), 0);
}

/// What the library could not measure, and what the profiler could not write: of that, one line.
void Recording::noteWhatWasSaid() {
  std::string files, reason;
  for (auto& notice : noticesIn(place_.logText())) {
    const auto unwritten = unwrittenFile(notice);
    if (unwritten) {
      files += (files.empty() ? "" : ", ") + unwritten->file;
      reason = unwritten->reason;
      metadata_.faults.push_back(std::move(notice));
    } else {
      metadata_.notices.push_back(std::move(notice));
    }
  }
  if (!files.empty()) message("not written to the end: " + files + ": " + reason);
}

void Recording::complete() {
  noteCommandEnd();
  group_.reset();
  for (const auto& gauge : gauges_)
    if (!gauge->fault().empty()) metadata_.faults.push_back(gauge->fault());
  gauges_.clear();
  if (!metadata_.end) metadata_.end = instantNow();
  if (!failed_) metadata_.profiler.version = programVersion(plan_.profiler);
  if (skipAsked_ && profiler_.ending().signal && place_.run() >= 0) dropConversions();
  noteWhatWasSaid();
  place_.endLog();
  if (place_.run() < 0) return;
  changeMetadata(place_.base(), place_.suffix(), [&](auto& stored) {
    if (stored) metadata_.marks = stored->marks;
    stored = metadata_;
  });
}

int Recording::status() const {
  if (failed_) return Status::profilerFailed;
  if (metadata_.command) return shellStatus(metadata_.command->ending);
  constexpr int signalled = 128;
  return !plan_.command.empty() && firstSignal_ != 0 ? signalled + firstSignal_ : Status::done;
}
