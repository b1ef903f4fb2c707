// Which files are converted, and what happens where one cannot be, or is malformed.

#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

#include "printed_by.h"
#include "result_rows.h"
#include "scratch_folder.h"
#include "splitline.h"
#include "summary.h"
#include "toCsv.h"
#include "toJson.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

namespace {

/// The first event of the process, whichever test runs first.
const std::string firstEvent =
    createMetadata("process_name", "1000415.00", "10", "12", "unused", "CPU_STATS");

TEST(TraceEvent, HasACommaAfterTheFirst) {
  EXPECT_EQ(firstEvent,
            R"({"name" : "process_name" ,"cat" : "corv:" , "ph" : "M", "ts" : 1000415.00, )"
            R"("pid" : 10, "tid" : 12, "args" : {"name" : "CPU_STATS"}})");
  const auto text =
      R"(,{"name" : "GPU" ,"cat" : "corv:" , "ph" : "C", "ts" : 2000830.00, "pid" : 11, )"
      R"("tid" : 2, "args" : {"Utilization" : "37.00"}})";
  EXPECT_EQ(createCounterEvent("GPU", "2000830.00", "11", "2", "Utilization", "37.00", 1), text);
  EXPECT_EQ("," + createCounterEvent("GPU", "2000830.00", "11", "2", "Utilization", "37.00", 0),
            text);
}

TEST(SplitLine, OnlyBlanksSeparate) {
  EXPECT_THAT(splitline("   a  b "), ElementsAre("a", "b"));
  EXPECT_THAT(splitline("a\tb c\r"), ElementsAre("a\tb", "c\r"));
  EXPECT_THAT(splitline(""), IsEmpty());
  EXPECT_THAT(splitline(std::string(40, ' ')), IsEmpty());
  EXPECT_THAT(splitline("\xff\x9f\xa0! exactly8 nine99999 " + std::string(21, ' ') + "!"),
              ElementsAre("\xff\x9f\xa0!", "exactly8", "nine99999", "!"));
}

class ResultFile : public testing::Test {
 protected:
  ScratchFolder folder;
};

TEST_F(ResultFile, IsKnownByTheWholePathForEachKindInOrder) {
  const auto sub = folder.path("x.txt-memprofiler");
  std::filesystem::create_directory(sub);
  const auto path = sub + "/netprofiler-procmem-profiler-thermalprofiler-ddrprofiler";
  std::ofstream(path) << "header only\n";
  const auto other = folder.path("other.txt");
  std::string trace, summary;
  for (const auto* kind : {"DDR", "MEM", "THERMAL", "PROCMEM", "NET"}) {
    const std::string call = "Calling the " + std::string(kind) + " profiler parser\nIn generate ";
    trace += call + "JSON : Processing : ";
    trace += path + "\nNo actual data, json file will not be generated!\n";
    if (std::string_view("DDR MEM").find(kind) == std::string_view::npos) continue;
    summary += call + "Summary : Processing : ";
    summary += path + "\n";
  }
  const std::string start = "Processing File : " + path + "\n";
  const std::string end = "Processing File : " + other + "\n";
  EXPECT_EQ(printedBy([&] { parseFiles({path, folder.path("cpuprofiler"), other}); }).out,
            start + trace + end);
  EXPECT_EQ(printedBy([&] { parseSummaryFiles({path, folder.path("cpuprofiler"), other}); }).out,
            start + summary + end);
}

TEST_F(ResultFile, OfNoKindIsReadAndRefused) {
  const auto generate = [](const std::string& path, int kind) {
    return printedBy([&] { generateJson(path, SYSIP(kind)); }).out;
  };
  const std::string start = "In generate JSON : Processing : ";
  const auto two = folder.write("two", "a\nb\n"), half = folder.write("half", "no line end");
  const auto one = folder.write("one", "\na\n\n"), none = folder.path("none");
  EXPECT_EQ(generate(two, 12), start + two + "\ndefault\n");
  EXPECT_EQ(generate(half, -1), start + half + "\ndefault\n");  // its row counts twice
  EXPECT_EQ(generate(one, 12),
            start + one + "\nNo actual data, json file will not be generated!\n");
  EXPECT_EQ(generate(none, 12), start + none + "\nNo such file.\n");
  for (const auto kind : {4, 7, 9, 10, 11, 12}) {
    EXPECT_EQ(printedBy([&] { generateSummary(two, SYSIP(kind)); }).out,
              "In generate Summary : Processing : " + two +
                  "\nSummary feature not yet supported for " + std::to_string(kind) + "\n");
  }
}

TEST_F(ResultFile, ThatIsMissing) {
  const auto path = folder.path("y.txt");
  EXPECT_EQ(generateCSV(path), -1);
  printedBy([&] { parseFilesCsv({path}); });
  EXPECT_TRUE(std::filesystem::exists(folder.path("y.csv")));
  EXPECT_EQ(folder.read("y.csv"), "");
  printedBy([&] { EXPECT_EQ(generateJson(path, MEM_STATS), -1); });
  EXPECT_THAT(printedBy([&] { generateSummary(path, MEM_STATS); }).out,
              EndsWith(path + "\nNo such file.\n"));
}

TEST_F(ResultFile, GivesItsNameLessFourCharactersToTheCsv) {
  const auto old = folder.write("x.txt.old", "1\n");
  printedBy([&] { parseFilesCsv({old, folder.write("z.csv", "1\n")}); });
  EXPECT_EQ(folder.read("x.txt.csv"), "1.00\n");
  EXPECT_EQ(folder.read("z.csv"), "1\n");
}

TEST_F(ResultFile, CannotHaveItsCsvWhileAnotherIsOpen) {
  printedBy([&] {
    generateCSV(folder.write("a.txt", "1\n"));
    EXPECT_EQ(generateCSV(folder.write("b.txt", "2\n")), 0);
    parseFilesCsv({folder.write("c.txt", "3\n"), folder.write("d.txt", "4\n")});
  });
  EXPECT_EQ(folder.read("a.csv"), "1.00\n");
  EXPECT_FALSE(std::filesystem::exists(folder.path("b.csv")));
  EXPECT_FALSE(std::filesystem::exists(folder.path("c.csv")));  // closes what was open
  EXPECT_EQ(folder.read("d.csv"), "4.00\n");
}

TEST_F(ResultFile, CanHaveLinesLongerThanTheBuffer) {
  const std::string big(300000, 'x');
  const auto path = folder.write("a.txt", "a " + big + " 1\n" + big + "\n2");
  printedBy([&] { parseFilesCsv({path}); });
  EXPECT_EQ(folder.read("a.csv"), "a," + big + ",1.00\n" + big + "\n2.00\n");
}

TEST_F(ResultFile, WhoseCsvCannotBeWrittenDoesNotStopTheOthers) {
  const auto victim = folder.write("victim", "whole\n");
  std::filesystem::create_directory(folder.path("a.csv"));
  std::filesystem::create_symlink(victim, folder.path("b.csv"));
  std::filesystem::create_hard_link(victim, folder.path("c.csv"));
  std::filesystem::create_symlink("/dev/full", folder.path("d.csv"));
  ASSERT_EQ(mkfifo(folder.path("e.csv").c_str(), 0600), 0);  // nobody reads it
  std::vector<FilePath> files;
  for (const auto* name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt", "f.txt"})
    files.emplace_back(folder.write(name, "\n4\n"));
  const auto console = printedBy([&] { parseFilesCsv(files); });
  EXPECT_THAT(console.out, testing::HasSubstr(folder.path("e.txt\nFound an empty line\n")));
  std::string expected;
  for (const std::string fault :
       {"a.csv cannot be opened: Is a directory",
        "b.csv cannot be opened: it is a link, which is not followed here",
        "c.csv cannot be opened: it has other names, too (hard links)",
        "d.csv cannot be opened: it is a link, which is not followed here",
        "e.csv cannot be opened: it is not a regular file"})
    expected += "corvane: " + folder.path(fault) + "\n";
  EXPECT_EQ(console.err, expected);
  EXPECT_EQ(folder.read("victim") + folder.read("f.csv"), "whole\n4.00\n");
}

TEST_F(ResultFile, ThatIsNoneReadsAsEmptyAndALinkIsNotFollowed) {
  std::filesystem::create_directory(folder.path("a.txt"));
  ASSERT_EQ(mkfifo(folder.path("b.txt").c_str(), 0600), 0);
  const int fifo = open(folder.path("b.txt").c_str(), O_RDWR);
  ASSERT_EQ(write(fifo, "1\n", 2), 2);
  std::filesystem::create_symlink(folder.write("secret", "1\n"), folder.path("c.txt"));
  std::filesystem::create_hard_link(folder.path("secret"), folder.path("d.txt"));
  const auto console = printedBy([&] { csvConvert(folder.path()); });
  close(fifo);
  for (const auto* name : {"a.csv", "b.csv", "c.csv", "d.csv"})
    EXPECT_EQ(std::filesystem::file_size(folder.path(name)), 0) << name;
  for (const std::string name : {"a.txt", "b.txt", "c.txt", "d.txt"}) {
    const bool isTold =
        console.out.find(folder.path(name) + "\nNo such file.\n") != std::string::npos;
    EXPECT_EQ(isTold, name > "b.txt") << name;
  }
  for (const std::string fault : {"c.txt is not read: it is a link, which is not followed here",
                                  "d.txt is not read: it has other names, too (hard links)"})
    EXPECT_THAT(console.err, testing::HasSubstr("corvane: " + folder.path(fault) + "\n"));
}

TEST_F(ResultFile, ThatCannotBeReadOnEndsForGoodWithItsLastWholeLine) {
  const auto path = folder.write("a.txt", "1\n2\n" + std::string(40, '3'));
  const auto console = printedBy([&] {
    const int unreadable = open(path.c_str(), O_WRONLY), whole = open(path.c_str(), O_RDONLY);
    const int descriptor = dup(unreadable);
    close(descriptor);  // the number that the reader's file gets
    ResultRows rows(path, traceReading, 8);
    EXPECT_TRUE(rows.next() && rows.next());
    for (const int instead : {unreadable, whole}) {
      dup2(instead, descriptor);
      EXPECT_FALSE(rows.next());
      close(instead);
    }
  });
  EXPECT_EQ(console.err, "corvane: " + path + " cannot be read to its end: Bad file descriptor\n");
}

struct MalformedCase {
  std::string file, content, fault, traceEnd;
};

class Malformed : public testing::TestWithParam<MalformedCase> {};

TEST_P(Malformed, EndsTheProgramWithWhatIsConvertedOnDisk) {
  const ScratchFolder folder;
  const auto& param = GetParam();
  folder.write(param.file, param.content);
  EXPECT_EXIT([&]() noexcept { jsonConvert(folder.path()); }(), testing::KilledBySignal(SIGABRT),
              param.fault);
  EXPECT_THAT(folder.read("ProfilerOutput.json"), EndsWith(param.traceEnd));
}

INSTANTIATE_TEST_SUITE_P(
    Files, Malformed,
    testing::Values(
        MalformedCase{"cpuprofiler.txt", "t a\n1 2\n2 3 4\n", "out_of_range",
                      R"("ts" : 2, "pid" : 10, "tid" : 1, "args" : {"load" : "3"}})"},
        MalformedCase{"memprofiler.txt", "t\n  \n1 2 3 4 5\n", "out_of_range", " ["},
        MalformedCase{"netprofiler.txt", "t\n1 lo 0 1 2\n\n2 lo 0 5\n", "out_of_range",
                      R"x("ts" : 1, "pid" : 21, "tid" : 1, "args" : {"Rx_bw(MB)" : "0.000002"}})x"},
        MalformedCase{"netprofiler.txt", "t\n1 lo 0 5 many\n", "invalid_argument",
                      R"({"name" : "NET_STATS"}})"}),
    [](const auto& info) { return "file" + std::to_string(info.index); });

TEST_F(ResultFile, ThatDoesNotFitItsHeaderHasNoSummary) {
  const auto refuses = [&](SYSIP kind, const char* content) {
    const auto path = folder.write("x", content);
    bool refused = false;
    printedBy([&] {
      try {
        generateSummary(path, kind);
      } catch (const std::out_of_range&) {
        refused = true;
      }
    });
    return refused;
  };
  EXPECT_TRUE(refuses(GPU_STATS, "t a\n1 2 3\n"));
  EXPECT_TRUE(refuses(CPU_STATS, "  \n1 2\n"));
  EXPECT_TRUE(refuses(DISKIO_STATS, "t d r\n1 sda 1 2 3\n"));
  EXPECT_TRUE(refuses(DISKIO_STATS, "t d r k\n1 sda 1 2\n"));
}

}  // namespace
