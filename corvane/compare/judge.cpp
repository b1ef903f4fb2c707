#include "judge.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "discoveries.h"

namespace {

constexpr double falseDiscoveries = 0.05;
constexpr double wide = 10;  // times what is worth telling: an interval that says nothing

/// Below this a change is nobody's concern, however sure it is: what the files' digits, a tick of
/// the clock or a page of memory make of nothing.
double negligible(const std::string& unit) {
  if (unit == "%") return 0.05;
  if (unit == "KB") return 16;
  if (unit == "MB/s") return 0.001;
  return 0;
}

/// What a change has to exceed.
double worthTelling(const Compared& figure, const Judgement& judgement) {
  return std::max(judgement.atLeastPercent / 100 * std::abs(figure.base),
                  negligible(figure.key.unit));
}

bool moreIsBetter(const FigureKey& key, const Judgement& judgement) {
  const auto means = [&](const std::string& said) { return isCalled(key, said); };
  return key.metric == "Available_Mem" || key.metric == "Swap_Free" ||
         std::ranges::any_of(judgement.moreIsBetter, means);
}

/// Both sides never moved, and stand at the same value: nothing was asked.
bool isConstant(const Difference& difference) {
  return difference.p >= 1 && difference.low == difference.high;
}

void judgeOne(Compared& figure, const Difference& difference, bool found,
              const Judgement& judgement) {
  const double enough = worthTelling(figure, judgement);
  const bool tells = std::abs(figure.fresh - figure.base) > enough;
  if (found && tells) {
    const bool more = figure.fresh > figure.base;
    figure.verdict = more == moreIsBetter(figure.key, judgement) ? Verdict::better : Verdict::worse;
    return;
  }
  figure.heldBack = tells && difference.p < falseDiscoveries;
  const double reach = std::max(std::abs(difference.low), std::abs(difference.high));
  const bool unknown = figure.heldBack || reach > wide * enough;
  figure.verdict = unknown ? Verdict::inconclusive : Verdict::same;
}

/// A thousand processes that did not change do not hide that the load did.
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
    if (isConstant(*figure.difference)) {
      figure.verdict = Verdict::same;
    } else {
      judgeOne(figure, *figure.difference, found[place++], judgement);
    }
  }
}

}  // namespace

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

bool isCalled(const FigureKey& key, std::string_view said) {
  return said == key.metric || said == key.source + "." + key.metric ||
         said == key.source + "." + key.entity + "." + key.metric;
}
