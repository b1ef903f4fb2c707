#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "condition_check.h"
#include "verdicts.h"

/// All that a comparison found out, as it is told.
struct Comparison {
  std::vector<std::string> runs[2];   ///< folders, base and new
  std::vector<std::string> settings;  ///< what differs beside the figures
  std::vector<Compared> figures;      ///< sorted by key
  std::vector<ConditionCheck::Outcome> conditions;
};

/// For people, 80 columns wide: what has changed, most first within better and worse, and how much
/// has not; or everything.
std::string comparisonText(const Comparison& comparison, bool all);

/// For machines: "metrics" with a member for each figure, "runs", "settings", "conditions".
std::string comparisonJson(const Comparison& comparison);

/// For the page of both sides: a table of what has changed and what could not be told.
nlohmann::json comparisonTable(const Comparison& comparison);
