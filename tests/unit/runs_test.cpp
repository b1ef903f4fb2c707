// What runs/ keeps of series, against all of their samples.

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <map>
#include <random>

#include "envelope.h"
#include "moments.h"
#include "processes.h"
#include "sources.h"
#include "statistics.h"

namespace runs {
namespace {

using testing::ElementsAre;

struct Sequence {
  const char* name;
  std::size_t count;
  double (*value)(std::mt19937&);
};

class Samples : public testing::TestWithParam<Sequence> {};

TEST_P(Samples, StatisticsAreTheirsAndMerge) {
  std::mt19937 chance(7);
  std::vector<double> all;
  Statistics whole, first, second;
  for (std::size_t i = 0; i < GetParam().count; ++i) {
    all.push_back(GetParam().value(chance));
    whole.add(all.back());
    (i % 3 == 0 ? first : second).add(all.back());
  }
  whole.add(std::nan(""));
  first.merge(second);
  std::ranges::sort(all);
  for (const double p : {0.0, 0.01, 0.5, 0.95, 0.99, 1.0}) {
    const auto rank = std::max(1.0, std::ceil(p * double(all.size())));
    const double exact = all[std::size_t(rank) - 1];
    EXPECT_NEAR(whole.quantile(p), exact, std::fabs(exact) * 0.004) << p;
    EXPECT_EQ(first.quantile(p), whole.quantile(p)) << p;
  }
  EXPECT_EQ(whole.count(), all.size());
  EXPECT_EQ(first.count(), all.size());
  EXPECT_EQ(whole.min(), all.front());
  EXPECT_EQ(first.max(), all.back());
}

TEST_P(Samples, EnvelopeHoldsEachInItsBucket) {
  std::mt19937 chance(7);
  Envelope envelope(256);
  std::vector<Envelope::Sample> all;
  double time = 1000;
  for (std::size_t i = 0; i < GetParam().count; ++i) {
    if (i == GetParam().count / 2) envelope.coarsen(64);
    time += 0.001 * double(chance() % 2000);
    all.push_back({time, GetParam().value(chance)});
    envelope.add(all.back().time, all.back().value);
    ASSERT_LE(envelope.size(), i < GetParam().count / 2 ? 256U : 64U);
  }
  if (all.size() <= 64) {
    ASSERT_TRUE(envelope.exact());
    EXPECT_EQ(envelope.samples().back().value, all.back().value);
    return;
  }
  std::map<std::size_t, Statistics> expected;
  for (const auto& [at, value] : all) {
    const auto microseconds = std::floor(at * 1e6 + 0.5) / 1e6;
    expected[std::size_t((microseconds - envelope.firstBucket()) / envelope.bucketSeconds())].add(
        value);
  }
  EXPECT_EQ(expected.rbegin()->first + 1, envelope.buckets().size());
  for (std::size_t i = 0; i < envelope.buckets().size(); ++i) {
    const auto& bucket = envelope.buckets()[i];
    ASSERT_EQ(bucket.count, expected[i].count()) << i;
    if (bucket.count == 0) continue;
    EXPECT_EQ(bucket.min, float(expected[i].min()));
    EXPECT_EQ(bucket.max, float(expected[i].max()));
    EXPECT_NEAR(bucket.sum, expected[i].sum(), 1e-9 * std::fabs(expected[i].sum()) + 1e-9);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Samples,
    testing::Values(
        Sequence{"few", 5, [](std::mt19937& chance) { return double(chance() % 100); }},
        Sequence{"percent", 20000,
                 [](std::mt19937& chance) { return double(chance() % 10001) / 100; }},
        Sequence{"signs", 5000, [](std::mt19937& chance) { return double(chance()) - 2e9; }},
        Sequence{"wide", 3000,
                 [](std::mt19937& chance) { return std::exp(double(chance() % 160) - 80); }},
        Sequence{"one", 300, [](std::mt19937&) { return 0.1; }}),
    [](const auto& each) { return each.param.name; });

TEST(Processes, OnlyTheFirstKeepDetailWhereThereAreMany) {
  constexpr int samples = 500;
  for (const int count : {100, 900}) {
    std::vector<Process> all(static_cast<std::size_t>(count));
    std::vector<Process*> pointers;
    for (int i = 0; i < count; ++i) {
      auto& process = all[std::size_t(i)];
      pointers.push_back(&process);
      for (int sample = 1; sample <= samples; ++sample) {
        process.cpu.add(i);
        process.cpuEnvelope.add(sample, i);
        process.pss.add(sample, i < 5 ? 10 * sample : i < 10 ? 9e6 : 800);
        process.pssEnvelope.add(sample, i);
      }
      process.cpuSeconds = process.pid = i;
    }
    coarsenAllButTop(pointers);
    for (const auto& process : all) {
      // Growth and peak, of equals the first by PID; processor time.
      const bool first = process.pid < 40 || process.pid >= count - 40;
      EXPECT_EQ(process.cpuEnvelope.exact(), first || count == 100) << process.pid;
      EXPECT_EQ(process.pssEnvelope.size() == samples, first || count == 100) << process.pid;
    }
  }
}

TEST(Moments, NameWhoUsedTheProcessors) {
  Moments moments;
  constexpr int samples = 5000;
  for (int second = 1; second <= samples; ++second) {
    for (int pid = 1; pid <= 30; ++pid)
      moments.candidate({pid, "usual", 0.01 * pid});
    if (second == 3210) moments.candidate({99, "culprit", 4});
    if (second == 3211) moments.candidate({99, "heir", 1});
    moments.endSample(second, 1);
  }
  const auto& stretches = moments.stretches();
  ASSERT_LE(stretches.size(), Moments::capacity);
  const auto at =
      std::ranges::find_if(stretches, [](const auto& stretch) { return stretch.end >= 3210; });
  ASSERT_NE(at, stretches.end());
  EXPECT_EQ(at->uses.front().name, "culprit");
  EXPECT_EQ(at->uses.front().cpuSeconds, 4);
  EXPECT_EQ(at->uses.size(), Moments::kept);
  double usual = 0, seconds = 0;
  const auto placeOf = [&](const auto& stretch) {
    return std::floor(stretch.end / moments.stretchSeconds());
  };
  for (const auto& stretch : stretches) {
    EXPECT_EQ(placeOf(stretch) - placeOf(stretches[0]), double(&stretch - stretches.data()));
    seconds += stretch.seconds;
    for (const auto& use : stretch.uses)
      usual += use.pid == 30 ? use.cpuSeconds : 0;
  }
  EXPECT_DOUBLE_EQ(seconds, samples);
  EXPECT_NEAR(usual, 0.3 * samples, 1e-6);
}

TEST(Sources, AreReadByTheirHeaderWhereNobodyKnowsThem) {
  const Fields header{"Time(usec)",  "cpu0-thermal(degC)", "Fan(%)",
                      "Current(mA)", "clk_mean(MHz)",      "Odd)"};
  const auto source = sourceOf("battery", header);
  EXPECT_EQ(source.word, "battery");
  std::vector<std::string> columns;
  for (const auto& column : source.columns)
    columns.push_back(column.entity + "|" + column.metric + "|" + column.unit +
                      (column.meaning == Meaning::ofPeriod ? "|period" : ""));
  EXPECT_THAT(columns, ElementsAre("cpu0|cpu0-thermal|degC", "|Fan|%|period", "|Current|mA",
                                   "|clk_mean|MHz|period", "|Odd)|"));
}

}  // namespace
}  // namespace runs
