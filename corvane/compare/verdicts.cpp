#include "verdicts.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "discoveries.h"
#include "rank_test.h"

namespace {

constexpr std::size_t enoughRuns = 5;  // for ranks; fewer cannot differ beyond chance
constexpr double falseDiscoveries = 0.05;

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

/// Below this a change is nobody's concern, however sure it is: what the files' digits, a tick of
/// the clock or a page of memory make of nothing.
double negligible(const std::string& unit) {
  if (unit == "%") return 0.05;
  if (unit == "KB") return 16;
  if (unit == "MB/s") return 0.001;
  return 0;
}

bool moreIsBetter(const FigureKey& key, const Judgement& judgement) {
  const auto& told = judgement.moreIsBetter;
  const auto named = [&](const std::string& metric) { return metric == key.metric; };
  return key.metric == "Available_Mem" || key.metric == "Swap_Free" ||
         std::ranges::any_of(told, named);
}

bool worthTelling(const Compared& figure, const Judgement& judgement) {
  const double change = std::abs(figure.fresh - figure.base);
  if (change <= negligible(figure.key.unit)) return false;
  const auto percent = figure.percent();
  return !percent || std::abs(*percent) >= judgement.atLeastPercent;
}

/// Both sides never moved, and stand at the same value: nothing was asked.
bool isConstant(const Difference& difference) {
  return difference.p >= 1 && difference.low == difference.high;
}

Verdict verdictOf(const Compared& figure, bool found, const Judgement& judgement) {
  if (!found || !worthTelling(figure, judgement)) return Verdict::same;
  const bool more = figure.fresh > figure.base;
  return more == moreIsBetter(figure.key, judgement) ? Verdict::better : Verdict::worse;
}

/// The figures of one source are one family: a thousand processes that did not change do not hide
/// that the load did.
void judgeFamily(std::span<Compared> family, const Judgement& judgement) {
  std::vector<double> probabilities;
  for (const auto& figure : family) {
    if (figure.difference && !isConstant(*figure.difference))
      probabilities.push_back(figure.difference->p);
  }
  const auto found = discoveries(probabilities, falseDiscoveries);
  std::size_t place = 0;
  for (auto& figure : family) {
    if (!figure.difference) continue;
    figure.verdict = isConstant(*figure.difference) ? Verdict::same
                                                    : verdictOf(figure, found[place++], judgement);
  }
}

void judge(std::span<Compared> figures, const Judgement& judgement) {
  while (!figures.empty()) {
    const auto& source = figures.front().key.source;
    std::size_t count = 0;
    while (count < figures.size() && figures[count].key.source == source)
      ++count;
    judgeFamily(figures.first(count), judgement);
    figures = figures.subspan(count);
  }
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
  if (base == 0) return std::nullopt;
  return (fresh - base) / std::abs(base) * 100;
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
  if (enough(values.means[base], values.means[fresh]))
    return compareByRanks(values.means[base], values.means[fresh]);
  const auto before = estimateOf(values, base);
  const auto after = estimateOf(values, fresh);
  if (!before || !after) return std::nullopt;
  return welch(*before, *after);
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
