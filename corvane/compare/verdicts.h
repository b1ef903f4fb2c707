#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "difference.h"
#include "figures.h"

enum class Verdict { better, worse, same, inconclusive };

/// As in the JSON: "better", ...
std::string_view nameOf(Verdict verdict);

/// What is worth telling, and which way is good.
struct Judgement {
  double atLeastPercent = 0;              ///< changes of the base value below it are none
  std::vector<std::string> moreIsBetter;  ///< metrics, beside those of which there is free more
};

/// A figure of both sides.
struct Compared {
  FigureKey key;
  double base = 0, fresh = 0;  ///< mean of the side's runs' means; their median from five runs on
  std::optional<Difference> difference;  ///< nothing: too little to tell
  Verdict verdict = Verdict::inconclusive;
  /// Sure if it were the only figure, but not among so many: inconclusive.
  bool heldBack = false;

  /// Of the base value; nothing where that is 0.
  std::optional<double> percent() const;
};

/// The figures of many runs in memory that grows with their number alone.
class Sides {
 public:
  enum Side { base, fresh };

  void add(Side side, const runs::RunSummary& run);
  std::size_t count(Side side) const { return runs_[side]; }

  /// Every figure that both sides could measure, sorted by key. The verdicts: one run a side is
  /// judged by batches of its samples, from five runs a side on the runs are the samples and are
  /// judged by ranks, in between by Welch's test; one run against several by what those differ.
  /// Among the figures of a source at most one in
  /// twenty of the changes named is expected to be chance.
  std::vector<Compared> compare(const Judgement& judgement) const;
  /// What only this side has of the sources of both: "io sdb" of a device, "gpu GPU_Clock".
  std::vector<std::string> onlyOn(Side side) const;

 private:
  struct Values {
    std::vector<double> means[2];
    std::optional<MeanEstimate> single[2];  ///< of a side's first run
  };

  std::optional<Difference> differenceOf(const Values& values) const;
  std::optional<MeanEstimate> estimateOf(const Values& values, Side side) const;

  std::map<FigureKey, Values> figures_;
  std::map<std::string, std::size_t> measured_[2];  ///< runs of the side that have the source
  std::size_t runs_[2] = {0, 0};
};
