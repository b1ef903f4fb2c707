#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "compare.h"
#include "convert.h"
#include "message.h"
#include "numbers.h"
#include "record.h"
#include "report.h"
#include "show.h"
#include "sources.h"
#include "suggestion.h"
#include "trace.h"

namespace {

/// A subcommand's options live as long as the command line; `run` is set by the one that is named.
struct Chosen {
  std::function<int()> run;
};

/// Refuses what is no number of the kind that is asked for, `what` it is, in one line.
CLI::Validator numberCheck(const char* what, double least) {
  const auto check = [what, least](const std::string& text) -> std::string {
    const auto number = toDouble(text);
    if (number && std::isfinite(*number) && *number >= least) return {};
    return "'" + text + "' is no " + what;
  };
  return {check, "", ""};
}

/// An option with one word each time it is given; what follows belongs to something else.
CLI::Option* addList(CLI::App& command, const char* name, std::vector<std::string>& words,
                     const char* text) {
  return command.add_option(name, words, text)->expected(1)->allow_extra_args(false)->take_all();
}

void addSelection(CLI::App& app, RunChoice& choice) {
  const auto seconds = numberCheck("number of seconds", std::numeric_limits<double>::lowest());
  app.add_option("--from", choice.from, "Leave out what was before this second of the run")
      ->type_name("S")
      ->check(seconds);
  app.add_option("--to", choice.to, "Leave out what was after this second of the run")
      ->type_name("S")
      ->check(seconds);
  addList(app, "--process", choice.processes,
          "Only processes of this name (a shell pattern) or PID; may be repeated")
      ->type_name("NAME|PID");
}

void addRunChoice(CLI::App& app, RunChoice& choice) {
  app.add_option("RUN", choice.run, "Run folder; the newest below ./Results_corvane unless named");
  addSelection(app, choice);
}

void addShow(CLI::App& app, ShowOptions& options, Chosen& chosen) {
  auto* const command =
      app.add_subcommand("show", "A run's sources, metrics and processes on one screen");
  addRunChoice(*command, options.choice);
  command->add_flag("--json", options.json, "All of it as JSON");
  command->callback([&] { chosen.run = [&] { return show(options); }; });
}

/// Leaves the number of "2%" or "2 %" or "2"; a word on it where it is none.
std::string readShare(std::string& text) {
  std::string number = text.ends_with('%') ? text.substr(0, text.size() - 1) : text;
  number.erase(number.find_last_not_of(' ') + 1);
  const bool plain = number.find_first_not_of(".0123456789") == number.npos &&
                     number.find_first_of("0123456789") != number.npos &&
                     std::ranges::count(number, '.') <= 1;
  if (!plain) return "'" + text + "' is no share of the base value, such as 2%";
  text = number;
  return "";
}

void addCompare(CLI::App& app, CompareOptions& options, Chosen& chosen) {
  auto* const command =
      app.add_subcommand("compare", "What differs between two sides of runs, beyond chance");
  command->add_option("BASE", options.base, "Run folders before the change (or patterns of them)")
      ->required();
  command->add_option("--with", options.fresh, "Run folders after the change")
      ->type_name("NEW...")
      ->required();
  addSelection(*command, options.choice);
  command
      ->add_option("--at-least", options.atLeastPercent,
                   "Tell changes of at least so much of the base value (1% unless set)")
      ->type_name("N%")
      ->transform(CLI::Validator(readShare, ""));
  addList(*command, "--more-is-better", options.moreIsBetter,
          "More of this metric is better; may be repeated")
      ->type_name("METRIC");
  addList(*command, "--fail-if", options.failIf,
          "Status 1 where this holds, as 'memory.Used_Mem.p95 > +5%'; may be repeated")
      ->type_name("CONDITION");
  command->add_option("--report", options.report, "Write a page of both sides over each other")
      ->type_name("FILE.html");
  command->add_flag("--all", options.all, "What has not changed, too");
  command->add_flag("--json", options.json, "All of it as JSON");
  command->callback([&] { chosen.run = [&] { return compare(options); }; });
}

void addTrace(CLI::App& app, TraceOptions& options, Chosen& chosen) {
  auto* const command = app.add_subcommand("trace", "A trace that trace viewers show in full");
  addRunChoice(*command, options.choice);
  command->add_option("-o,--output", options.output, "The trace; compressed where it ends in .gz")
      ->type_name("FILE.json[.gz]")
      ->required();
  command->add_flag("--all", options.all, "Keep tracks that are zero throughout");
  command->add_option("--max-mb", options.maxMb, "Widen the step until the trace is below N MB")
      ->type_name("N")
      ->check(numberCheck("size above 0 MB", std::numeric_limits<double>::min()));
  command->callback([&] { chosen.run = [&] { return trace(options); }; });
}

void addConvert(CLI::App& app, ConvertOptions& options, Chosen& chosen) {
  auto* const command = app.add_subcommand(
      "convert", "What the profiler makes after a run, for runs that were cut off or copied");
  command->add_option("RUN", options.run,
                      "Run folder; the newest below ./Results_corvane unless named");
  command->add_flag("--json", options.json, "ProfilerOutput.json in the run folder");
  command->add_flag("--csv", options.csv, "A CSV file beside each result file");
  command->add_flag("--summary", options.summary, "The summary on standard output");
  command->callback([&] { chosen.run = [&] { return convert(options); }; });
}

void addReport(CLI::App& app, ReportOptions& options, Chosen& chosen) {
  auto* const command = app.add_subcommand(
      "report", "A page to look at, of a run or of several over each other, in one file");
  command->add_option("RUN", options.runs,
                      "Run folders; the newest below ./Results_corvane unless named");
  addSelection(*command, options.choice);
  command
      ->add_option("-o,--output", options.output,
                   "The page; unless named, the first run's name with .html, here")
      ->type_name("FILE");
  command->callback([&] { chosen.run = [&] { return report(options); }; });
}

void addRecord(CLI::App& app, RecordOptions& options, Chosen& chosen) {
  auto* const command = app.add_subcommand(
      "record",
      "Record a command, or this machine until Ctrl-C or for a time: -- COMMAND ... "
      "Returns up to one period (--every) after the command.");
  const auto option = [&](const char* name, auto& value, const char* type, const char* text) {
    command->add_option(name, value, text)->type_name(type);
  };
  option("--for", options.limit, "TIME", "Record for so long: 90s, 10m, 2h");
  addList(*command, "--only", options.only, "Record these sources alone: cpu,proc")
      ->type_name("SOURCES");
  addList(*command, "--without", options.without, "Leave these sources out")->type_name("SOURCES");
  addList(*command, "--every", options.every,
          "Time between samples, 1s unless given; of one source: proc=500ms; may be repeated")
      ->type_name("[SOURCE=]TIME");
  option("--name", options.name, "NAME", "Name of the run folder; the start time unless given");
  addList(*command, "--label", options.labels, "Note with the run; may be repeated")
      ->type_name("KEY=VALUE");
  option("-o,--output", options.output, "FOLDER", "Where Results_corvane is; here unless given");
  command->add_flag("--json", options.json, "Let the profiler write its trace at the end");
  command->add_flag("--csv", options.csv, "Let the profiler write its CSV files at the end");
  command->add_flag("--report", options.report, "Make the page at the end, beside the run folder");
  command->add_flag("-q,--quiet", options.quiet, "Do not say at the end what was recorded");
  option("--profiler", options.profiler, "PATH",
         "The profiler; the one beside this program unless given");
  option("--mark", options.mark, "TEXT",
         "Record nothing, but put a mark into the recording that goes on");
  for (const auto* name :
       {"--for", "--only", "--without", "--every", "--label", "--json", "--csv", "--report"})
    command->get_option("--mark")->excludes(command->get_option(name));
  command->callback([&] { chosen.run = [&] { return record(options); }; });
}

void addSources(CLI::App& app, SourcesOptions& options, Chosen& chosen) {
  auto* const command = app.add_subcommand(
      "sources", "What can be recorded on this machine, and why other things cannot");
  command->add_option("--profiler", options.profiler, "The profiler whose library is asked")
      ->type_name("PATH");
  command->callback([&] { chosen.run = [&] { return sources(options); }; });
}

/// Takes the command to be recorded, which stands after "--", off the command line: its words are
/// its own. Returns the number of words before it.
int takeCommand(int argc, char** argv, RecordOptions& options) {
  if (argc < 2 || std::strcmp(argv[1], "record") != 0) return argc;
  for (int i = 2; i < argc; ++i) {
    if (std::strcmp(argv[i], "--") != 0) continue;
    options.command.emplace(argv + i + 1, argv + argc);
    return i;
  }
  return argc;
}

/// The options of a command, or the subcommands where the word is no option.
std::vector<std::string> candidates(const CLI::App& command, const std::string& word) {
  std::vector<std::string> names;
  if (word.starts_with('-')) {
    for (const auto* option : command.get_options()) {
      for (const auto& name : option->get_lnames())
        names.push_back("--" + name);
    }
  } else {
    for (const auto* subcommand : command.get_subcommands({}))
      names.push_back(subcommand->get_name());
  }
  return names;
}

int explain(const CLI::App& app, const CLI::ParseError& error) {
  const auto parsed = app.get_subcommands();
  const auto& command = parsed.empty() ? app : *parsed.front();
  const auto left = app.remaining(true);
  if (!left.empty()) {
    const auto& word = left.front();
    const auto name = word.substr(0, word.find('='));
    const bool isCommand = command.get_name() == "record" && !word.starts_with('-');
    message("unknown " + word +
            (isCommand ? "; a command to record stands after --"
                       : suggestion(name, candidates(command, name))));
  } else {
    message(error.what());
  }
  return Status::wrongUse;
}

}  // namespace

int runCommandLine(int argc, char** argv) {
  CLI::App app("Records runs by the profiler, and reads the run folders that it leaves.",
               "corvane");
  app.set_version_flag("--version", "corvane " CORVANE_VERSION);
  app.require_subcommand(1);
  Chosen chosen;
  ShowOptions showOptions;
  addShow(app, showOptions, chosen);
  CompareOptions compareOptions;
  addCompare(app, compareOptions, chosen);
  TraceOptions traceOptions;
  addTrace(app, traceOptions, chosen);
  ConvertOptions convertOptions;
  addConvert(app, convertOptions, chosen);
  ReportOptions reportOptions;
  addReport(app, reportOptions, chosen);
  RecordOptions recordOptions;
  addRecord(app, recordOptions, chosen);
  SourcesOptions sourcesOptions;
  addSources(app, sourcesOptions, chosen);
  try {
    app.parse(takeCommand(argc, argv, recordOptions), argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    return explain(app, error);
  }
  return chosen.run();
}
