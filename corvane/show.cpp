#include "show.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

#include "message.h"
#include "progress.h"
#include "run_summary.h"
#include "show_json.h"
#include "show_text.h"

namespace {

runs::RunSummary read(const std::filesystem::path& folder, const ShowOptions& options) {
  ProgressLine line("reading");
  return runs::readRun(folder, selectionOf(options.choice), {}, [&](double done) {
    line.show(done);
    return true;
  });
}

}  // namespace

int show(const ShowOptions& options) {
  const auto folder = chosenRun(options.choice.run);
  if (folder.empty()) return Status::wrongUse;
  const auto run = read(folder, options);
  for (const auto& note : run.notes)
    message(note);
  if (run.empty()) {
    message("nothing could be read from " + folder.string());
    return Status::wrongUse;
  }
  const bool colour = ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
  const auto text = options.json ? showJson(run) : showText(run, colour);
  std::fwrite(text.data(), 1, text.size(), stdout);
  return std::fflush(stdout) == 0 ? Status::done : Status::wrongUse;
}
