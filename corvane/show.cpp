#include "show.h"

#include <cstdio>

#include "message.h"
#include "run_files.h"

int show(const ShowOptions& options) {
  const auto folder = chosenRun(options.choice.run);
  if (folder.empty()) return Status::wrongUse;
  for (const auto& file : runs::listResultFiles(folder))
    std::puts(file.path.c_str());
  return Status::done;
}
