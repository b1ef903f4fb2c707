#include "sources.h"

#include <cstdio>

#include "ask_machine.h"
#include "plan.h"
#include "refusal.h"
#include "standard_output.h"

namespace {

void print(const SourceState& source) {
  auto text = source.there ? source.what : source.said;
  if (source.there && !source.counted.empty())
    text += ", " + std::to_string(source.count) + " " + source.counted;
  std::printf("%-10s%-5s%s\n", source.word.c_str(), source.there ? "yes" : "no", text.c_str());
  if (source.there && !source.said.empty()) std::printf("%15s(%s)\n", "", source.said.c_str());
}

}  // namespace

int sources(const SourcesOptions& options) {
  try {
    const auto machine =
        askMachine(findProfiler(options.profiler).parent_path(), allSources(), true);
    if (!machine.failure.empty()) throw Refusal(machine.failure);
    for (const auto& source : machine.sources)
      print(source);
    std::printf("%s, %s\n", machine.versionOfLibrary.c_str(), machine.fileOfLibrary.c_str());
    return putOut("") ? Status::done : Status::wrongUse;
  } catch (const Refusal& refusal) {
    message(refusal.what());
    return refusal.status;
  }
}
