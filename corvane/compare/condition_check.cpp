#include "condition_check.h"

#include <cstdio>

#include "message.h"
#include "suggestion.h"

bool ConditionCheck::parse(const std::vector<std::string>& texts) {
  for (const auto& text : texts) {
    std::string problem;
    auto condition = parseCondition(text, problem);
    if (!condition) {
      message(std::string("--fail-if '").append(text).append("': ").append(problem));
      return false;
    }
    watched_.push_back({.condition = std::move(*condition)});
  }
  return true;
}

void ConditionCheck::add(Sides::Side side, const runs::RunSummary& run) {
  for (auto& watched : watched_) {
    if (const auto value = valueIn(run, watched.condition)) {
      watched.sum[side] += *value;
      ++watched.count[side];
    }
    watched.named = watched.named || isNamedIn(run, watched.condition);
  }
  if (watched_.empty() || seen_[side]) return;
  seen_[side] = true;
  const auto names = figureNames(run);
  figures_.insert(figures_.end(), names.begin(), names.end());
}

std::vector<ConditionCheck::Outcome> ConditionCheck::outcomes() const {
  std::vector<Outcome> outcomes;
  for (const auto& watched : watched_) {
    Outcome outcome{.condition = &watched.condition};
    if (watched.named && watched.count[Sides::base] != 0 && watched.count[Sides::fresh] != 0) {
      outcome.known = true;
      outcome.base = watched.sum[Sides::base] / double(watched.count[Sides::base]);
      outcome.fresh = watched.sum[Sides::fresh] / double(watched.count[Sides::fresh]);
      outcome.holds = watched.condition.holds(outcome.base, outcome.fresh);
    }
    outcomes.push_back(outcome);
  }
  return outcomes;
}

int ConditionCheck::report() const {
  bool anyHolds = false;
  bool anyUnknown = false;
  for (const auto& outcome : outcomes()) {
    const auto& text = outcome.condition->text;
    anyHolds = anyHolds || outcome.holds;
    anyUnknown = anyUnknown || !outcome.known;
    if (!outcome.known) {
      const auto target = text.substr(0, text.find_first_of(" <>"));
      message("--fail-if '" + text + "': no such figure on both sides" +
              suggestion(target.substr(0, target.rfind('.')), figures_));
    } else if (outcome.holds) {
      char values[80];
      std::snprintf(values, sizeof values, ": %g -> %g", outcome.base, outcome.fresh);
      message("'" + text + "' holds" + values);
    }
  }
  return anyHolds ? Status::finding : anyUnknown ? Status::wrongUse : Status::done;
}
