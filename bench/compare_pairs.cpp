// How often `corvane compare` is wrong about pairs of runs of which it is known whether they
// differ: series that keep the share r of each sample for the next one, with a standard deviation
// of 1. Usage: compare_pairs [PAIRS]. A line a case: runs a side, r, samples, pairs with a verdict,
// of those called changed where nothing is, and found where all samples are shifted.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "verdicts.h"

namespace {

struct Case {
  int runs;
  double r;
  int samples;
  double shift;  // in standard deviations of a sample
};

class Machine {
 public:
  runs::RunSummary run(const Case& one, double level) {
    runs::MetricSeries series;
    series.source = "cpu";
    series.metric = "TotalCPU";
    series.unit = "%";
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

Verdict verdictOn(Machine& machine, const Case& one, double shift) {
  constexpr double level = 50;
  Sides sides;
  for (int run = 0; run < one.runs; ++run) {
    sides.add(Sides::base, machine.run(one, level));
    sides.add(Sides::fresh, machine.run(one, level + shift));
  }
  return sides.compare({}).front().verdict;
}

struct Found {
  int verdicts = 0, changed = 0;
};

Found findings(Machine& machine, const Case& one, double shift, int pairs) {
  Found found;
  for (int pair = 0; pair < pairs; ++pair) {
    const auto verdict = verdictOn(machine, one, shift);
    found.verdicts += verdict != Verdict::inconclusive ? 1 : 0;
    found.changed += verdict == Verdict::better || verdict == Verdict::worse ? 1 : 0;
  }
  return found;
}

double percent(int part, int all) {
  return all == 0 ? 0 : 100.0 * part / all;
}

}  // namespace

int main(int argc, char** argv) {
  const int pairs = argc > 1 ? std::atoi(argv[1]) : 1000;
  Machine machine;
  for (const int runs : {1, 5}) {
    for (const double r : {0.0, 0.5, 0.9, 0.97}) {
      for (const int samples : {60, 600, 3600}) {
        const Case one{.runs = runs, .r = r, .samples = samples, .shift = runs == 1 ? 1.0 : 2.0};
        const auto same = findings(machine, one, 0, pairs);
        const auto other = findings(machine, one, one.shift, pairs);
        std::printf("%d %.2f %d %d %.1f %.1f\n", runs, r, samples, same.verdicts,
                    percent(same.changed, same.verdicts), percent(other.changed, other.verdicts));
        std::fflush(stdout);
      }
    }
  }
}
