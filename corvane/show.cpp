#include "show.h"

#include <cstdio>

#include "message.h"
#include "run_summary.h"
#include "show_json.h"

int show(const ShowOptions& options) {
  const auto folder = chosenRun(options.choice.run);
  if (folder.empty()) return Status::wrongUse;
  const auto& choice = options.choice;
  const runs::Selection selection{
      .from = choice.from, .to = choice.to, .processes = choice.processes};
  const auto run = runs::readRun(folder, selection, {});
  for (const auto& note : run.notes)
    message(note);
  if (run.empty()) {
    message("nothing could be read from " + folder.string());
    return Status::wrongUse;
  }
  const auto text = showJson(run);
  std::fwrite(text.data(), 1, text.size(), stdout);
  return std::fflush(stdout) == 0 ? Status::done : Status::wrongUse;
}
