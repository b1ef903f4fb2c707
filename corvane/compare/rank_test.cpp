#include "rank_test.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace {

constexpr std::size_t mostExact = 40;
constexpr double normalBound = 1.959963984540054;  // exceeded on either side by 5 % together

/// Twice the rank of every value among all, base first: values that are equal share the middle of
/// their ranks, which twice is a whole number.
std::vector<std::size_t> doubledRanks(std::span<const double> base, std::span<const double> fresh) {
  std::vector<double> sorted(base.begin(), base.end());
  sorted.insert(sorted.end(), fresh.begin(), fresh.end());
  std::vector<double> all = sorted;
  std::sort(sorted.begin(), sorted.end());
  std::vector<std::size_t> ranks;
  ranks.reserve(all.size());
  for (const double value : all) {
    const auto [first, last] = std::equal_range(sorted.begin(), sorted.end(), value);
    ranks.push_back(std::size_t(first - sorted.begin()) + std::size_t(last - sorted.begin()) + 1);
  }
  return ranks;
}

/// How many of the ways to choose `count` of the ranks have each sum.
std::vector<double> waysBySum(std::span<const std::size_t> ranks, std::size_t count) {
  std::size_t total = 0;
  for (const std::size_t rank : ranks)
    total += rank;
  std::vector<std::vector<double>> ways(count + 1, std::vector<double>(total + 1));
  ways[0][0] = 1;
  for (const std::size_t rank : ranks) {
    for (std::size_t chosen = count; chosen > 0; --chosen) {
      for (std::size_t sum = total; sum >= rank; --sum)
        ways[chosen][sum] += ways[chosen - 1][sum - rank];
    }
  }
  return ways[count];
}

double shareUpTo(std::span<const double> ways, std::size_t sum) {
  double all = 0;
  double upTo = 0;
  for (std::size_t at = 0; at < ways.size(); ++at) {
    all += ways[at];
    if (at <= sum) upTo += ways[at];
  }
  return upTo / all;
}

double exactProbability(std::span<const std::size_t> ranks, std::size_t baseCount) {
  std::size_t sum = 0;
  for (const std::size_t rank : ranks.first(baseCount))
    sum += rank;
  const auto ways = waysBySum(ranks, baseCount);
  const double below = shareUpTo(ways, sum);
  const double above = 1 - shareUpTo(ways, sum - 1);
  return std::min(1.0, 2 * std::min(below, above));
}

/// The standard deviation of the Mann-Whitney count, less what ties take from it.
double countDeviation(std::span<const std::size_t> ranks, double n, double m) {
  std::vector<std::size_t> sorted(ranks.begin(), ranks.end());
  std::sort(sorted.begin(), sorted.end());
  double ties = 0;
  for (std::size_t at = 0; at < sorted.size();) {
    const auto end = std::upper_bound(sorted.begin(), sorted.end(), sorted[at]);
    const auto equal = double(end - sorted.begin()) - double(at);
    ties += equal * equal * equal - equal;
    at = std::size_t(end - sorted.begin());
  }
  const double all = n + m;
  return std::sqrt(n * m / 12 * (all + 1 - ties / (all * (all - 1))));
}

double normalProbability(std::span<const std::size_t> ranks, std::size_t baseCount) {
  double doubledSum = 0;
  for (std::size_t at = 0; at < baseCount; ++at)
    doubledSum += double(ranks[at]);
  const auto n = double(baseCount);
  const double m = double(ranks.size()) - n;
  const double deviation = countDeviation(ranks, n, m);
  if (deviation <= 0) return 1;
  const double off = std::abs(doubledSum / 2 - n * (n + m + 1) / 2) - 0.5;
  return std::min(1.0, std::erfc(off / deviation / std::numbers::sqrt2));
}

/// How many of the ordered differences lie outside of the interval at either end.
std::size_t leftOut(std::size_t n, std::size_t m) {
  if (n + m > mostExact) {
    const auto a = double(n);
    const auto b = double(m);
    const double reach = normalBound * std::sqrt(a * b * (a + b + 1) / 12);
    return std::size_t(std::max(0.0, std::floor(a * b / 2 - reach)));
  }
  std::vector<std::size_t> ranks(n + m);
  for (std::size_t at = 0; at < ranks.size(); ++at)
    ranks[at] = at + 1;
  const auto ways = waysBySum(ranks, n);
  const std::size_t least = n * (n + 1) / 2;
  std::size_t count = 0;
  while (shareUpTo(ways, least + count) <= intervalError / 2)
    ++count;
  return count;
}

std::vector<double> orderedDifferences(std::span<const double> base,
                                       std::span<const double> fresh) {
  std::vector<double> differences;
  differences.reserve(base.size() * fresh.size());
  for (const double before : base) {
    for (const double after : fresh)
      differences.push_back(after - before);
  }
  std::sort(differences.begin(), differences.end());
  return differences;
}

}  // namespace

Difference compareByRanks(std::span<const double> base, std::span<const double> fresh) {
  const auto differences = orderedDifferences(base, fresh);
  const std::size_t count = differences.size();
  const std::size_t out = leftOut(base.size(), fresh.size());
  const auto ranks = doubledRanks(base, fresh);
  return {.estimate = (differences[(count - 1) / 2] + differences[count / 2]) / 2,
          .low = differences[out],
          .high = differences[count - 1 - out],
          .p = ranks.size() > mostExact ? normalProbability(ranks, base.size())
                                        : exactProbability(ranks, base.size())};
}
