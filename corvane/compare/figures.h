#pragma once

#include <compare>
#include <optional>
#include <string>
#include <vector>

#include "run_summary.h"
#include "welch.h"

/// What a figure is of: a metric of the machine, a core, a device, an interface, or of all
/// processes of one name.
struct FigureKey {
  std::string source, entity, metric, unit;

  auto operator<=>(const FigureKey&) const = default;
};

/// One figure of one run.
struct Figure {
  FigureKey key;
  double mean = 0;
  /// How well the run alone knows it; nothing where it is too short for that.
  std::optional<MeanEstimate> estimate;
};

/// All figures of a run that was read with envelopes of metrics and processes: its metrics, and by
/// name what the processes used, as CPU_Usage in % of a core and PSS in KB. A name counts with 0
/// while no process has it.
std::vector<Figure> figuresOf(const runs::RunSummary& run);
