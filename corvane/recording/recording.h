#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "child.h"
#include "gauge_file.h"
#include "metadata.h"
#include "plan.h"
#include "run_place.h"
#include "signals.h"

/// A run from the profiler's start to its end, with the command beside it.
class Recording {
 public:
  /// `metadata` is what is known before the start.
  Recording(const Plan& plan, RunPlace& place, const Signals& signals,
            std::vector<std::string> profilerArguments, runs::Metadata metadata);

  /// Records until the command has ended, the limit is reached or a signal has come, and the
  /// profiler is through with its conversions.
  void run();

  /// The exit status: the command's, as a shell gives it, or that the profiler failed.
  int status() const;

 private:
  using Time = Signals::Time;

  void startProfiler();
  void startCommand();
  void startGauges();
  void noteCommandEnd();
  void sampleGauges(Time now);
  void step(Time now);
  void stepWhileStarting(Time now);
  void stepWhileSampling(Time now);
  void stepWhileEnding(Time now);
  void judge(const runs::Ending& ending);
  Time nextStep(Time now) const;
  void takeSignal(int signal, Time now);
  bool leaveToCommand(int signal);
  void askToStop(Time now);
  void fail(const std::string& reason);
  void dropConversions() const;
  bool consoleShows(std::string_view text);
  bool goesOn();
  void noteWhatWasSaid();
  void complete();

  const Plan& plan_;
  RunPlace& place_;
  const Signals& signals_;
  std::vector<std::string> arguments_;
  runs::Metadata metadata_;
  Child profiler_, command_;
  std::unique_ptr<GroupListener> group_;
  std::vector<std::unique_ptr<GaugeFile>> gauges_;

  enum class Phase { starting, sampling, ending } phase_ = Phase::starting;
  Time phaseStart_;
  std::optional<Time> limit_;  ///< when the profiler ends or is ended
  std::optional<Time> stopAsked_;
  std::optional<Time> skipAsked_;    ///< the conversions are not to be waited for
  bool commandInterrupted_ = false;  ///< by the terminal, once
  bool profiled_ = false;            ///< the profiler is through with sampling
  int firstSignal_ = 0;
  std::size_t consoleRead_ = 0;
  std::string console_;  ///< the end of what was read, for texts that arrive in pieces
  bool failed_ = false;
};
