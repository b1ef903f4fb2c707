#include "convert.h"

#include <iostream>
#include <stdexcept>
#include <unistd.h>

#include "message.h"
#include "new_file.h"
#include "run_choice.h"
#include "run_folder.h"
#include "standard_output.h"
#include "summary.h"
#include "toCsv.h"
#include "toJson.h"

namespace {

namespace fs = std::filesystem;

/// Nothing that is put on standard output meanwhile gets there.
class Silence {
 public:
  Silence() : buffer_(std::cout.rdbuf(nullptr)) {}
  ~Silence() {
    std::cout.rdbuf(buffer_);  // and takes output again
  }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  std::streambuf* buffer_;
};

/// The path that the profiler had for the folder, "Results_corvane/x", which stands in for others
/// here: what a file is, the converters see in all of its path. Goes to the folder two above.
std::string goAbove(const fs::path& folder) {
  const auto full = fs::canonical(folder);
  const auto results = full.parent_path();
  fs::current_path(results.parent_path());
  return results.filename() / full.filename();
}

bool makeJson(const Folder& folder) {
  removeOnSignal(folder.path() + "/ProfilerOutput.json");
  const bool made = jsonConvert(folder) == 0;
  removeOnSignal("");
  return made;
}

void makeCsv(const Folder& folder) {
  for (const auto& file : listRunFolder(folder)) {
    if (!isResultFile(file.path)) continue;
    removeOnSignal(file.path.substr(0, file.path.size() - 4) + ".csv");
    parseFilesCsv({file});
  }
  removeOnSignal("");
}

int convertIn(const std::string& path, const ConvertOptions& options) {
  const Folder folder(path);
  {
    const Silence silence;
    if (options.json && !makeJson(folder)) return Status::wrongUse;
    if (options.csv) makeCsv(folder);
    if (options.summary) parseSummaryFiles(listRunFolder(folder));
  }
  if (options.summary) printSummary();
  // It goes on to C's stream.
  std::cout.flush();
  return putOut("") ? Status::done : Status::wrongUse;
}

}  // namespace

int convert(const ConvertOptions& options) {
  if (!options.json && !options.csv && !options.summary) {
    message("say what to make: --json, --csv or --summary");
    return Status::wrongUse;
  }
  const auto folder = chosenRun(options.run);
  if (folder.empty()) return Status::wrongUse;
  try {
    return convertIn(goAbove(folder), options);
  } catch (const std::logic_error&) {
    message("a result file in " + folder.string() +
            " is malformed; what was made so far is left as the profiler leaves it");
  } catch (const fs::filesystem_error& error) {
    message(folder.string() + ": " + error.code().message());
  }
  return Status::wrongUse;
}
