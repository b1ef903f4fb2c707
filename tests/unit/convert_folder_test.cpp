// Whole run folders, each with what the three conversions make of it and print: the folders of
// fixtures/convert. Where a change of that is meant, CORVANE_UPDATE_FIXTURES=1 writes them anew.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <regex>
#include <set>

#include "printed_by.h"
#include "scratch_folder.h"
#include "summary.h"
#include "toCsv.h"
#include "toJson.h"

namespace fs = std::filesystem;

namespace {

class RunFolder : public testing::TestWithParam<std::string> {
 protected:
  /// What the process remembers from one conversion to the next is made the same for each test.
  void SetUp() override {
    summaryTable.clear();
    for (auto* list : {&cpuSummaries, &gpuSummaries, &adspSummaries, &cdspSummaries, &ddrSummaries,
                       &memSummaries, &diskioSummaries})
      list->clear();
    printedBy([] { createMetadata("has been made", "so", "all", "have", "a", "comma"); });
  }

  ScratchFolder folder;
};

/// The names of the files in a folder but the one that stands for the console.
std::set<std::string> filesIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& file : fs::directory_iterator(folder))
    if (file.path().filename() != "console") names.insert(file.path().filename());
  return names;
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

/// The text without what differs from run to run and library to library, and each event of the
/// trace on a line of its own.
std::string readable(std::string text, const std::string& folder) {
  text = std::regex_replace(text, std::regex("File = .*\n"), "");
  text = replaceAll(replaceAll(text, folder, "RUN"), "}},{", "}}\n,{");
  for (const std::string_view disk : {"sda", "sdb"}) {
    const auto hash = std::to_string(std::hash<std::string_view>{}(disk));
    text = replaceAll(text, hash, std::string("HASH-OF-").append(disk));
  }
  return text;
}

void expectContent(const fs::path& expected, const std::string& text) {
  if (std::getenv("CORVANE_UPDATE_FIXTURES") != nullptr) std::ofstream(expected) << text;
  EXPECT_EQ(text, contentOf(expected)) << expected;
}

TEST_P(RunFolder, IsConvertedAsExpected) {
  const fs::path fixture = FIXTURES "/convert/" + GetParam();
  for (const auto& name : filesIn(fixture))
    if (name.ends_with(".txt")) fs::copy(fixture / name, folder.path());
  const int countBefore = csvConversionCount;
  const auto console = printedBy([&] {
    EXPECT_EQ(jsonConvert(folder.path()), 0);
    EXPECT_EQ(csvConvert(folder.path()), 0);
    EXPECT_EQ(getSummary(folder.path()), 0);
  });
  expectContent(fixture / "console", readable(console.out, folder.path()));
  EXPECT_EQ(console.err, "");
  const auto made = filesIn(folder.path());
  EXPECT_EQ(csvConversionCount - countBefore,
            std::ranges::count_if(made, [](auto& name) { return name.ends_with(".csv"); }));
  for (const auto& name : made) {
    if (name.ends_with(".txt")) continue;
    expectContent(fixture / name, readable(folder.read(name), folder.path()));
  }
  EXPECT_EQ(filesIn(folder.path()), filesIn(fixture));
}

std::vector<std::string> fixtures() {
  std::vector<std::string> names;
  for (const auto& folder : fs::directory_iterator(FIXTURES "/convert"))
    names.push_back(folder.path().filename());
  return names;
}

INSTANTIATE_TEST_SUITE_P(Fixtures, RunFolder, testing::ValuesIn(fixtures()),
                         [](const auto& info) { return info.param; });

TEST_F(RunFolder, WithoutResultFilesGivesFramesOnly) {
  folder.write("ProfilerOutput.json", "from an earlier run");
  const auto console = printedBy([&] {
    jsonConvert(folder.path());
    getSummary(folder.path());
  });
  for (const std::string name : {".", "..", "ProfilerOutput.json"})
    EXPECT_THAT(console.out, testing::HasSubstr("\nFile = " + name + "\n"));
  EXPECT_EQ(folder.read("ProfilerOutput.json"),
            "{\"displayTimeUnit\": \"ns\",\n \"traceEvents\": []}\n");
}

TEST_F(RunFolder, ThatIsNotThereMakesNoTrace) {
  const Folder nowhere("/nowhere");
  const auto console = printedBy([&] {
    EXPECT_EQ(jsonConvert(nowhere), -1);
    EXPECT_EQ(csvConvert(nowhere), 0);
    EXPECT_EQ(getSummary(nowhere), 0);
  });
  const std::string line = "Directory to be parsed = /nowhere\n";
  EXPECT_THAT(console.out, testing::StartsWith(line + line + line + "+++"));
  EXPECT_EQ(console.err,
            "corvane: /nowhere/ProfilerOutput.json cannot be opened: No such file or directory\n"
            "open file '/nowhere/ProfilerOutput.json' failed!\n");
}

TEST_F(RunFolder, WithTwoFilesOfAKindRepeatsTheFirstInTheSummary) {
  std::string content = "t a\n";
  for (int i = 0; i < 19; ++i)
    content += "1 16458694\n";  // their mean, in 32 bits, is one off
  const auto first = folder.write("gpuprofiler_1.txt", content);
  const auto second = folder.write("gpuprofiler_2.txt", content);
  printedBy([&] { parseSummaryFiles({first, second}); });
  const std::string row =
      "                         GPU a  |         16458694.00  |         16458695.00  |"
      "         16458694.00  |\n";
  EXPECT_THAT(printedBy(printSummary).out,
              testing::HasSubstr("Max  |\n" + row + row + row + "\n+"));
}

}  // namespace
