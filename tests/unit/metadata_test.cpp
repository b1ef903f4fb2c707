#include "metadata.h"

#include <gmock/gmock.h>

using namespace runs;

namespace {

TEST(Metadata, OfARunReadsAsItWasWritten) {
  Metadata written;
  written.suffix = "x";
  written.start = {.wallNs = -1, .zoneSeconds = -12600, .boot = 12.25, .counter = 1'000'000};
  written.end = written.start;
  written.counterHz = 24'576'000;
  written.labels = {{"a\"\n", "\xff\xE2\x82\xAC"}};
  written.marks = {
      {.at = {.wallNs = 1'764'000'000'123'456'789, .zoneSeconds = 19800}, .text = "m"}};
  written.command.emplace();
  written.command->arguments = {"a", ""};
  written.command->ending.signal = 9;
  written.sources = {{.source = "cpu", .milliseconds = 5}};
  written.host.frequencies = {{.cores = "0-3", .governor = "g", .minKhz = 1, .maxKhz = 2}};
  const auto read = parseMetadata(toJson(written));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->start.wallTime(), "1969-12-31T20:29:59.999999999-03:30");
  EXPECT_EQ(read->start.wallNs, -1);
  EXPECT_EQ(read->start.zoneSeconds, -12600);
  EXPECT_EQ(read->marks.at(0).at.wallTime(), "2025-11-24T21:30:00.123456789+05:30");
  EXPECT_EQ(read->marks[0].at.wallNs, written.marks[0].at.wallNs);
  EXPECT_EQ(read->labels.at("a\"\n"), "\xEF\xBF\xBD\xE2\x82\xAC");
  EXPECT_EQ(read->command->ending.signal, 9);
  EXPECT_FALSE(read->command->ending.status || read->command->start);
  EXPECT_EQ(toJson(*read), toJson(*parseMetadata(toJson(*read))));
}

TEST(Metadata, LaysStampsOnTheRunsAxisWhateverTheCounterRuns) {
  Metadata metadata;
  metadata.counterHz = 24'576'000;
  metadata.start = {.wallNs = 100'000'000'000, .counter = 24'576'000};
  const double stamp = 24'576'000 * 3 / 19.2;  // two seconds later
  EXPECT_DOUBLE_EQ(metadata.secondsAt(stamp), 2);
  EXPECT_DOUBLE_EQ(metadata.wallAt(stamp), 102);
}

TEST(Metadata, TakesWhatItKnowsAndPassesOverTheRest) {
  EXPECT_FALSE(parseMetadata(""));
  EXPECT_FALSE(parseMetadata("[]"));
  EXPECT_FALSE(parseMetadata(R"({"schema": 2})"));
  EXPECT_FALSE(parseMetadata(R"({"schema": 1, "counter_hz": 0})"));
  const auto read = parseMetadata(
      R"({"schema": 1, "new": [1], "suffix": 7, "sources": 3, "marks": [{"text": "t"}, 5],
          "host": {"cores": "many", "name": "h"}})");
  ASSERT_TRUE(read);
  EXPECT_EQ(read->suffix, "");
  EXPECT_EQ(read->host.name, "h");
  EXPECT_EQ(read->marks.at(0).text, "t");
}

TEST(Metadata, LiesBesideTheRunFolder) {
  EXPECT_EQ(metadataFile("a/b"), "a/b.run.json");
  EXPECT_EQ(metadataFile("a/b/"), "a/b.run.json");
  EXPECT_EQ(metadataFile("a/c/../b"), "a/b.run.json");
  EXPECT_EQ(metadataFile("."), std::filesystem::current_path().string() + ".run.json");
}

}  // namespace
