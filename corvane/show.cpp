#include "show.h"

#include <cstdlib>
#include <unistd.h>

#include "message.h"
#include "show_json.h"
#include "show_text.h"
#include "standard_output.h"

int show(const ShowOptions& options) {
  const auto folder = chosenRun(options.choice.run);
  if (folder.empty()) return Status::wrongUse;
  const auto run = readChosen(folder, options.choice, {});
  if (!run) return Status::wrongUse;
  const bool colour = ::isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
  const auto text = options.json ? showJson(*run) : showText(*run, colour);
  return putOut(text) ? Status::done : Status::wrongUse;
}
