// What runs/ keeps of series, against all of their samples.

#include <algorithm>
#include <array>
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
    if (second == 1500) moments.candidate({98, "brief", 0.5});
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
  const auto brief =  // less in its stretch than eight others, but most in one sample
      std::ranges::find_if(stretches, [](const auto& stretch) { return stretch.end >= 1500; });
  EXPECT_EQ(std::ranges::count(brief->uses, "brief", &Moments::Use::name), 1);
  EXPECT_EQ(std::ranges::max(brief->uses, {}, &Moments::Use::peak).peak, 0.5);
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

struct Header {
  const char* prefix;
  const char* source;  // word: title
  Fields fields;
  std::vector<std::string> columns;  // field entity|metric|unit|meaning|pair
};

class Sources : public testing::TestWithParam<Header> {};

TEST_P(Sources, MeanWhatTheirHeaderSays) {
  const auto source = sourceOf(GetParam().prefix, GetParam().fields);
  EXPECT_EQ(source.word + ": " + source.title, GetParam().source);
  std::vector<std::string> columns;
  for (const auto& column : source.columns) {
    constexpr std::array meanings{"state", "period", "amount"};
    columns.push_back(std::to_string(column.field) + " " + column.entity + "|" + column.metric +
                      "|" + column.unit + "|" + meanings[std::size_t(column.meaning)] + "|" +
                      column.pair + (column.bytes ? " of bytes" : "") +
                      (column.drawn ? "" : " listed"));
  }
  EXPECT_EQ(columns, GetParam().columns);
}

const std::array headers{
    Header{"cpu",
           "cpu: Processor",
           {"Time(usec)", "TotalCPU", "cpu0(%)", "cpu12(%)", "CPUStealTime(%)", "cpu12steal(%)"},
           {"1 |TotalCPU|%|period|", "2 cpu0|cpu0|%|period|", "3 cpu12|cpu12|%|period|",
            "4 |CPUStealTime|%|period|", "5 cpu12|cpu12steal|%|period|"}},
    Header{"gpu",
           "gpu: GPU",
           {"Time(usec)", "GPUFreq(MHz)", "GPUReadBW(MB/s)", "GPUWriteBW(MB/s)"},
           {"1 |GPUFreq|MHz|state|", "2 |GPUReadBW|MB/s|period|bandwidth",
            "3 |GPUWriteBW|MB/s|period|bandwidth"}},
    Header{"adsp", "adsp: Audio DSP", {"Time(usec)", "Load(%)"}, {"1 |Load|%|period|"}},
    Header{"cdsp", "cdsp: Compute DSP", {"Time(usec)", "Load(%)"}, {"1 |Load|%|period|"}},
    Header{"cdsp1", "cdsp1: Second compute DSP", {"Time(usec)", "Hz(MHz)"}, {"1 |Hz|MHz|state|"}},
    Header{"ddr",
           "ddr: Memory bandwidth",
           {"Time(usec)", "llcc_rd(MB/s)", "llcc_wr(MB/s)", "cabo_rd(MB/s)", "cabo_wr(MB/s)"},
           {"1 |llcc_rd|MB/s|period|llcc", "2 |llcc_wr|MB/s|period|llcc",
            "3 |cabo_rd|MB/s|period|cabo", "4 |cabo_wr|MB/s|period|cabo"}},
    Header{"mem",
           "mem: Memory",
           {"Time(usec)", "Used_Mem(KB)", "Mem_Usage(%)", "Swap_Used(KB)", "Swap_Used(%)"},
           {"1 |Used_Mem|KB|state|", "2 |Mem_Usage|%|state|", "3 |Swap_Used|KB|state|",
            "4 |Swap_Used|%|state|"}},
    Header{
        "proc",
        "proc: Processes",
        {"Time(usec)", "PID", "ProcessName", "UserTime", "SystemTime", "TotalTime", "CPU_Usage(%)"},
        {"3 |UserTime|s|state| listed", "4 |SystemTime|s|state| listed",
         "5 |TotalTime|s|state| listed", "6 |CPU_Usage|%|period|"}},
    Header{"diskio",
           "io: Disks",
           {"Time(usec)", "Device", "Bytes_read", "KB_read/s", "Bytes_write", "KB_write/s"},
           {"2 |read|MB/s|period|disk of bytes", "4 |write|MB/s|period|disk of bytes"}},
    Header{"procmem-",
           "procmem: Memory of processes",
           {"Time(usec)", "PID", "PPID", "ProcessName", "VSS(KB)", "PSS(KB)"},
           {"4 |VSS|KB|state|", "5 |PSS|KB|state|"}},
    Header{"net",
           "net: Network",
           {"Time(usec)", "Network_Interface", "Collisions", "Tx_bw(bytes)", "Rx_bw(bytes)",
            "Tx_packets", "Rx_packets", "Tx_packets(dropped)", "Rx_packets(dropped)"},
           {"2 |Collisions||amount|", "3 |sent|MB/s|period|network of bytes",
            "4 |received|MB/s|period|network of bytes", "6 |Rx_packets||amount|",
            "7 |Tx_packets(dropped)||amount|dropped", "8 |Rx_packets(dropped)||amount|dropped"}},
    Header{"battery",
           "battery: battery",
           {"Time(usec)", "cpu0-thermal(degC)", "Fan(%)", "Current(mA)", "clk_mean(MHz)", "Odd)"},
           {"1 cpu0|cpu0-thermal|degC|state|", "2 |Fan|%|period|", "3 |Current|mA|state|",
            "4 |clk_mean|MHz|period|", "5 |Odd)||state|"}}};

INSTANTIATE_TEST_SUITE_P(Each, Sources, testing::ValuesIn(headers),
                         [](const auto& info) { return std::to_string(info.index); });

}  // namespace
}  // namespace runs
