#include <cmath>
#include <cstdint>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "batch_means.h"
#include "discoveries.h"
#include "rank_test.h"
#include "student.h"
#include "welch.h"

namespace {

using Numbers = std::vector<double>;
using Groups = std::vector<Numbers>;

Groups groupsOf(const std::string& text) {
  Groups groups(1);
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word == "|") {
      groups.emplace_back();
    } else {
      groups.back().push_back(std::stod(word));
    }
  }
  return groups;
}

Numbers numbersOf(const Difference& difference) {
  return {difference.estimate, difference.low, difference.high, difference.p};
}

MeanEstimate estimateOf(const Numbers& values) {
  double sum = 0;
  double squares = 0;
  const auto n = double(values.size());
  for (const double value : values)
    sum += value;
  for (const double value : values)
    squares += (value - sum / n) * (value - sum / n);
  return {.mean = sum / n, .variance = squares / (n - 1) / n, .freedom = n - 1};
}

const std::map<std::string, std::function<Numbers(const Groups&)>> computed = {
    {"student", [](const Groups& in) { return Numbers{studentTwoSided(in[0][0], in[0][1])}; }},
    {"bound", [](const Groups& in) { return Numbers{studentBound(in[0][0], in[0][1])}; }},
    {"ranks", [](const Groups& in) { return numbersOf(compareByRanks(in[0], in[1])); }},
    {"welch",
     [](const Groups& in) { return numbersOf(welch(estimateOf(in[0]), estimateOf(in[1]))); }},
    {"discoveries",
     [](const Groups& in) {
       const auto found = discoveries(in[0], 0.05);
       return Numbers(found.begin(), found.end());
     }},
};

TEST(CompareStatistics, GiveWhatALibraryGives) {
  std::ifstream file(FIXTURES "/compare/known_answers.txt");
  int cases = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    const auto space = line.find(' ');
    auto groups = groupsOf(line.substr(space));
    const auto expected = groups.back();
    groups.pop_back();
    const auto found = computed.at(line.substr(0, space))(groups);
    ASSERT_EQ(found.size(), expected.size()) << line;
    for (std::size_t place = 0; place < found.size(); ++place)
      EXPECT_NEAR(found[place], expected[place], 1e-9 * (1 + std::abs(expected[place]))) << line;
    ++cases;
  }
  EXPECT_GT(cases, 20);
}

// Each value keeps the share r of the one before; the noise is a fixed sequence without repetition.
Numbers series(std::size_t count, double r, double drift = 0) {
  Numbers values;
  std::uint64_t state = 88172645463325252ULL;
  double value = 0;
  for (std::size_t at = 0; at < count; ++at) {
    double noise = -6;  // twelve even ones are as good as normal
    for (int part = 0; part < 12; ++part) {
      state = state * 6364136223846793005ULL + 1442695040888963407ULL;
      noise += double(state >> 11) / double(1ULL << 53);
    }
    value = r * value + std::sqrt(1 - r * r) * noise;
    values.push_back(value + drift * double(at));
  }
  return values;
}

TEST(CompareStatistics, TheMeanOfCorrelatedSamplesIsKnownAsWellAsTheyAllow) {
  struct {
    std::size_t count;
    double r, drift;
    double variance;  // of the mean: (1 + r) / (1 - r) / count; 0: too little to tell
  } const cases[] = {{3600, 0, 0, 1 / 3600.0},
                     {3600, 0.9, 0, 19 / 3600.0},
                     {20000, 0.97, 0, 65.7 / 20000},
                     {9, 0, 0, 0},
                     {60, 0.97, 0, 0},
                     {3600, 0, 0.01, 0},
                     {3600, 0, 0.0005, 0}};
  for (const auto& one : cases) {
    const auto values = series(one.count, one.r, one.drift);
    const auto mean = meanByBatches(values);
    EXPECT_EQ(mean.has_value(), one.variance > 0) << one.count << " " << one.r;
    if (!mean) continue;
    EXPECT_GT(mean->variance, 0.6 * one.variance) << one.count << " " << one.r;
    EXPECT_LT(mean->variance, 1.9 * one.variance) << one.count << " " << one.r;
    EXPECT_GE(mean->freedom, 5) << one.count << " " << one.r;
  }
  EXPECT_EQ(meanByBatches(Numbers(10, 5)).value_or(MeanEstimate{.variance = 1}).variance, 0);
}

}  // namespace
