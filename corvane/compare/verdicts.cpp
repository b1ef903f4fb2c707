#include "verdicts.h"

#include <algorithm>
#include <cmath>

#include "judge.h"
#include "rank_test.h"

namespace {

constexpr std::size_t enoughRuns = 5;  // for ranks; fewer cannot differ beyond chance

double meanOf(std::vector<double> values) {
  double sum = 0;
  for (const double value : values)
    sum += value;
  return values.empty() ? 0 : sum / double(values.size());
}

double medianOf(std::vector<double> values) {
  std::ranges::sort(values);
  const std::size_t count = values.size();
  return (values[(count - 1) / 2] + values[count / 2]) / 2;
}

bool enough(const std::vector<double>& base, const std::vector<double>& fresh) {
  return std::min(base.size(), fresh.size()) >= enoughRuns;
}

MeanEstimate meanOfRuns(const std::vector<double>& means) {
  const double mean = meanOf(means);
  double squares = 0;
  for (const double value : means)
    squares += (value - mean) * (value - mean);
  const auto n = double(means.size());
  return {.mean = mean, .variance = squares / (n - 1) / n, .freedom = n - 1};
}

}  // namespace

std::string_view nameOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::better:
      return "better";
    case Verdict::worse:
      return "worse";
    case Verdict::same:
      return "same";
    case Verdict::inconclusive:
      break;
  }
  return "inconclusive";
}

std::optional<double> Compared::percent() const {
  return percentChange(base, fresh);
}

void Sides::add(Side side, const runs::RunSummary& run) {
  for (auto& figure : figuresOf(run)) {
    auto& values = figures_[std::move(figure.key)];
    if (values.means[side].empty()) values.single[side] = figure.estimate;
    values.means[side].push_back(figure.mean);
  }
  for (const auto& source : run.sources) {
    if (source.samples != 0) ++measured_[side][source.word];
  }
  ++runs_[side];
}

std::optional<MeanEstimate> Sides::estimateOf(const Values& values, Side side) const {
  return values.means[side].size() == 1 ? values.single[side] : meanOfRuns(values.means[side]);
}

std::optional<Difference> Sides::differenceOf(const Values& values) const {
  const auto& before = values.means[base];
  const auto& after = values.means[fresh];
  if (enough(before, after)) return compareByRanks(before, after);
  if ((before.size() > 1) != (after.size() > 1)) {
    const auto& several = before.size() > 1 ? before : after;
    const auto n = double(several.size());
    const auto known = meanOfRuns(several);
    // Runs that are all alike say nothing of how much runs differ.
    if (known.variance > 0) {
      return differenceOfMeans(meanOf(before), meanOf(after), known.variance * (1 + n),
                               known.freedom);
    }
  }
  const auto left = estimateOf(values, base);
  const auto right = estimateOf(values, fresh);
  if (!left || !right) return std::nullopt;
  return welch(*left, *right);
}

std::vector<Compared> Sides::compare(const Judgement& judgement) const {
  std::vector<Compared> compared;
  for (const auto& [key, found] : figures_) {
    Values values = found;
    const bool ofProcesses = key.source == "proc" || key.source == "procmem";
    for (const Side side : {base, fresh}) {
      const auto measured = measured_[side].find(key.source);
      const std::size_t runs = measured == measured_[side].end() ? 0 : measured->second;
      // No process of that name ran: it used nothing, and that is certain.
      if (ofProcesses && values.means[side].empty()) values.single[side] = MeanEstimate{};
      if (ofProcesses) values.means[side].resize(runs);
    }
    if (values.means[base].empty() || values.means[fresh].empty()) continue;
    // As ranks judge them: by what is typical, whatever one run did.
    const auto typical = enough(values.means[base], values.means[fresh]) ? medianOf : meanOf;
    compared.push_back({.key = key,
                        .base = typical(values.means[base]),
                        .fresh = typical(values.means[fresh]),
                        .difference = differenceOf(values)});
  }
  judge(compared, judgement);
  return compared;
}

std::vector<std::string> Sides::onlyOn(Side side) const {
  const Side other = side == base ? fresh : base;
  std::vector<std::string> only;
  for (const auto& [key, values] : figures_) {
    const bool ofProcesses = key.source == "proc" || key.source == "procmem";
    if (ofProcesses || values.means[side].empty() || !values.means[other].empty()) continue;
    if (!measured_[other].contains(key.source)) continue;  // told by the sources
    auto name = key.source + " " + (key.entity.empty() ? key.metric : key.entity);
    if (only.empty() || only.back() != name) only.push_back(std::move(name));
  }
  return only;
}
