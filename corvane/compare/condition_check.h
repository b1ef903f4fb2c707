#pragma once

#include <optional>
#include <string>
#include <vector>

#include "conditions.h"
#include "verdicts.h"

/// Follows what must not hold through the runs of both sides: a side's figure is the mean of its
/// runs'.
class ConditionCheck {
 public:
  /// False, after a message, where a text is no condition.
  bool parse(const std::vector<std::string>& texts);
  void add(Sides::Side side, const runs::RunSummary& run);

  struct Outcome {
    const Condition* condition;
    double base = 0, fresh = 0;
    std::string unit;    ///< of both
    bool known = false;  ///< both sides have the figure, and the change is one of such
    bool holds = false;
  };
  std::vector<Outcome> outcomes() const;
  /// Says which conditions hold and which name nothing; the exit status that this makes.
  int report() const;

 private:
  struct Watched {
    Condition condition;
    double sum[2] = {0, 0};
    std::size_t count[2] = {0, 0};
    std::string unit;    // of the figure
    bool named = false;  // in any run
  };
  /// Why the outcome is not known, after ": ".
  std::string reason(const Watched& watched) const;

  std::vector<Watched> watched_;
  std::vector<std::string> figures_;  // of each side's first run, for a word on what was meant
  bool seen_[2] = {false, false};     // a run of the side
};
