#include "command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <numeric>

#include "message.h"
#include "show.h"

namespace {

/// A subcommand's options live as long as the command line; `run` is set by the one that is named.
struct Chosen {
  std::function<int()> run;
};

void addRunChoice(CLI::App& app, RunChoice& choice) {
  app.add_option("RUN", choice.run, "Run folder; the newest below ./Results_corvane unless named");
  app.add_option("--from", choice.from, "Leave out what was before this second of the run")
      ->type_name("S");
  app.add_option("--to", choice.to, "Leave out what was after this second of the run")
      ->type_name("S");
  app.add_option("--process", choice.processes,
                 "Only processes of this name (a shell pattern) or PID; may be repeated")
      ->type_name("NAME|PID")
      ->expected(1)
      ->take_all();
}

void addShow(CLI::App& app, ShowOptions& options, Chosen& chosen) {
  auto* const command =
      app.add_subcommand("show", "A run's sources, metrics and processes on one screen");
  addRunChoice(*command, options.choice);
  command->add_flag("--json", options.json, "All of it as JSON");
  command->callback([&] { chosen.run = [&] { return show(options); }; });
}

/// How many letters have to be changed, added or left out to get from one word to the other.
std::size_t distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < from.size(); ++i) {
    auto diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const auto replaced = diagonal + (from[i] == to[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
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

/// " (did you mean ...?)" where something close exists.
std::string suggestion(const CLI::App& command, const std::string& word) {
  const auto name = word.substr(0, word.find('='));
  const auto names = candidates(command, name);
  const auto best = std::ranges::min_element(
      names, {}, [&](const std::string& candidate) { return distance(name, candidate); });
  if (best == names.end() || distance(name, *best) > std::max<std::size_t>(2, name.size() / 3))
    return "";
  return "; did you mean " + *best + "?";
}

int explain(const CLI::App& app, const CLI::ParseError& error) {
  const auto parsed = app.get_subcommands();
  const auto& command = parsed.empty() ? app : *parsed.front();
  const auto left = app.remaining(true);
  if (!left.empty()) {
    message("unknown " + left.front() + suggestion(command, left.front()));
  } else {
    message(error.what());
  }
  return Status::wrongUse;
}

}  // namespace

int runCommandLine(int argc, char** argv) {
  CLI::App app("Reads the run folders of the profiler.", "corvane");
  app.set_version_flag("--version", "corvane " CORVANE_VERSION);
  app.require_subcommand(1);
  Chosen chosen;
  ShowOptions showOptions;
  addShow(app, showOptions, chosen);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    return explain(app, error);
  }
  return chosen.run();
}
