#include "condition_check.h"

#include "closest_figures.h"
#include "message.h"
#include "number_text.h"

namespace {

/// Whether the change can be one of a figure in this unit.
bool fits(const Condition& condition, std::string_view unit) {
  return condition.unit.empty() || condition.unit == unit;
}

}  // namespace

bool ConditionCheck::parse(const std::vector<std::string>& texts) {
  for (const auto& text : texts) {
    std::string problem;
    auto condition = parseCondition(text, problem);
    if (!condition) {
      message(std::string("--fail-if '").append(text).append("': ").append(problem));
      return false;
    }
    watched_.push_back({.condition = std::move(*condition), .unit = ""});
  }
  return true;
}

void ConditionCheck::add(Sides::Side side, const runs::RunSummary& run) {
  for (auto& watched : watched_) {
    if (const auto value = valueIn(run, watched.condition)) {
      watched.sum[side] += value->value;
      watched.unit = value->unit;
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
    Outcome outcome{.condition = &watched.condition, .unit = watched.unit};
    if (watched.named && watched.count[Sides::base] != 0 && watched.count[Sides::fresh] != 0 &&
        fits(watched.condition, watched.unit)) {
      outcome.known = true;
      outcome.base = watched.sum[Sides::base] / double(watched.count[Sides::base]);
      outcome.fresh = watched.sum[Sides::fresh] / double(watched.count[Sides::fresh]);
      outcome.holds = watched.condition.holds(outcome.base, outcome.fresh);
    }
    outcomes.push_back(outcome);
  }
  return outcomes;
}

std::string ConditionCheck::reason(const Watched& watched) const {
  const auto& condition = watched.condition;
  if (!watched.named) return "no such figure" + closestFigures(condition.figure, figures_);
  for (const auto side : {Sides::base, Sides::fresh}) {
    if (watched.count[side] == 0) {
      return std::string("only the ") + (side == Sides::base ? "new" : "base") +
             " runs have this figure";
    }
  }
  return condition.figure + " is in " + watched.unit + ", not in " + condition.unit;
}

int ConditionCheck::report() const {
  bool anyHolds = false;
  bool anyUnknown = false;
  std::size_t place = 0;
  for (const auto& outcome : outcomes()) {
    const auto& watched = watched_[place++];
    const auto& text = outcome.condition->text;
    anyHolds = anyHolds || outcome.holds;
    anyUnknown = anyUnknown || !outcome.known;
    if (!outcome.known) {
      message("--fail-if '" + text + "': " + reason(watched));
    } else if (outcome.holds) {
      message("'" + text + "' holds: " + numberText(outcome.base) + " -> " +
              numberText(outcome.fresh) + " " + outcome.unit + ", " +
              changeText(outcome.base, outcome.fresh));
    }
  }
  return anyHolds ? Status::finding : anyUnknown ? Status::wrongUse : Status::done;
}
