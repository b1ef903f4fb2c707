// How often `corvane compare` is wrong about pairs of runs of which it is known whether they
// differ: series that keep the share r of each sample for the next one, with a standard deviation
// of 1. Usage: compare_pairs [PAIRS]. A line a case: runs a side, r, samples; of pairs that are the
// same: those with an interval, % of them sure of any change, those with a verdict, % of them
// called changed; % found where all samples are shifted. Then one run against several that differ
// among each other: "1:5", the last two percentages of all pairs.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <random>

#include "verdicts.h"

namespace {

struct Case {
  int base, fresh;  // runs
  double r;
  int samples;
  double shift;       // in standard deviations of a sample
  double spread = 0;  // of the runs' levels, likewise
};

class Machine {
 public:
  runs::RunSummary run(const Case& one, double level) {
    runs::MetricSeries series;
    series.source = "cpu";
    series.metric = "TotalCPU";
    series.unit = "%";
    level += one.spread * normal_(random_);
    double value = normal_(random_);
    for (int at = 1; at <= one.samples; ++at) {
      series.statistics.add(level + value);
      series.envelope.add(at, level + value);
      value = one.r * value + std::sqrt(1 - one.r * one.r) * normal_(random_);
    }
    runs::RunSummary summary;
    summary.sources.push_back({.word = "cpu", .title = "", .samples = std::uint64_t(one.samples)});
    summary.metrics.push_back(std::move(series));
    return summary;
  }

 private:
  std::mt19937_64 random_{2026};
  std::normal_distribution<double> normal_;
};

struct Found {
  int intervals = 0, sure = 0;    // whatever the size of the change
  int verdicts = 0, changed = 0;  // with --at-least as it is unless set
};

bool isChange(Verdict verdict) {
  return verdict == Verdict::better || verdict == Verdict::worse;
}

void tryPair(Machine& machine, const Case& one, double shift, Found& found) {
  constexpr double level = 50;
  Sides sides;
  for (int run = 0; run < one.base; ++run)
    sides.add(Sides::base, machine.run(one, level));
  for (int run = 0; run < one.fresh; ++run)
    sides.add(Sides::fresh, machine.run(one, level + shift));
  const auto any = sides.compare({.atLeastPercent = 0, .moreIsBetter = {}}).front();
  const auto told = sides.compare({.atLeastPercent = 1, .moreIsBetter = {}}).front().verdict;
  found.intervals += any.difference ? 1 : 0;
  found.sure += isChange(any.verdict) ? 1 : 0;
  found.verdicts += told != Verdict::inconclusive ? 1 : 0;
  found.changed += isChange(told) ? 1 : 0;
}

Found findings(Machine& machine, const Case& one, double shift, int pairs) {
  Found found;
  for (int pair = 0; pair < pairs; ++pair)
    tryPair(machine, one, shift, found);
  return found;
}

double percent(int part, int all) {
  return all == 0 ? 0 : 100.0 * part / all;
}

void tell(Machine& machine, const Case& one, int pairs) {
  const auto same = findings(machine, one, 0, pairs);
  const auto other = findings(machine, one, one.shift, pairs);
  const bool equal = one.base == one.fresh;
  std::printf("%d", one.base);
  if (!equal) std::printf(":%d", one.fresh);
  std::printf(" %.2f %d %d %.1f %d %.1f %.1f\n", one.r, one.samples, same.intervals,
              percent(same.sure, same.intervals), same.verdicts,
              percent(same.changed, equal ? same.verdicts : pairs),
              percent(other.changed, equal ? other.verdicts : pairs));
  std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) try {
  const int pairs = argc > 1 ? std::atoi(argv[1]) : 1000;
  Machine machine;
  for (const int runs : {1, 5}) {
    for (const double r : {0.0, 0.5, 0.9, 0.97}) {
      for (const int samples : {60, 600, 3600}) {
        const double shift = runs == 1 ? 1.0 : 2.0;
        tell(machine, {.base = runs, .fresh = runs, .r = r, .samples = samples, .shift = shift},
             pairs);
      }
    }
  }
  for (const int several : {2, 5, 10}) {
    tell(machine, {.base = 1, .fresh = several, .r = 0.5, .samples = 300, .shift = 10, .spread = 2},
         pairs);
  }
} catch (const std::exception& error) {
  std::fprintf(stderr, "compare_pairs: %s\n", error.what());
  return 1;
}
