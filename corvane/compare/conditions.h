#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run_summary.h"

/// What must not hold, as "memory.Used_Mem.p95 > +5%": a figure of a run and how far it may move
/// from the base runs to the new ones.
///
///     SOURCE[.ENTITY].METRIC.STATISTIC        statistic: mean min max p50 p95 p99
///     process:NAME.cpu.(mean|max|seconds)     all processes of a name together
///     process:NAME.pss.(mean|max|first|last|growth)
///
/// followed by ">" or "<" and the change: a sign, a number, and "%" (of the base value) or a unit
/// (KB MB GB, KB/s MB/s GB/s, points of a percentage, or nothing).
struct Condition {
  std::string text;
  std::string source, entity, metric, statistic;  ///< `source` "process": entity is the name
  std::string figure;                             ///< as figureNames() has it
  bool above = true;
  double change = 0;  ///< in the metric's own unit, or percent
  bool relative = false;
  std::string unit;  ///< of the change; empty: the metric's

  /// Whether a change from one value to the other is what must not be.
  bool holds(double base, double fresh) const;
};

/// Nothing, and a sentence in `problem`, where the text is no condition.
std::optional<Condition> parseCondition(std::string_view text, std::string& problem);

struct FoundFigure {
  double value = 0;
  std::string unit;
};

/// The figure in one run; nothing where the run does not have it. A process of which nothing ran
/// has 0 where the run lists processes.
std::optional<FoundFigure> valueIn(const runs::RunSummary& run, const Condition& condition);

/// Whether the run has what the condition names: a process of that name, too.
bool isNamedIn(const runs::RunSummary& run, const Condition& condition);

/// The figures of the run by their names in a condition, without the statistic, for a word on what
/// might have been meant.
std::vector<std::string> figureNames(const runs::RunSummary& run);
