#include "run_choice.h"

#include <cstdio>

#include "message.h"
#include "progress.h"
#include "run_files.h"

std::filesystem::path chosenRun(const std::string& run) {
  std::filesystem::path folder =
      run.empty() ? runs::newestRun("Results_corvane") : std::filesystem::path(run);
  if (folder.empty()) {
    message("there is no run below Results_corvane; name a run folder");
  } else if (runs::listResultFiles(folder).empty()) {
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(folder, error);
    message(folder.string() + (isFolder ? " holds no result files" : " is no folder"));
    return {};
  }
  return folder;
}

runs::Selection selectionOf(const RunChoice& choice) {
  return {.from = choice.from, .to = choice.to, .processes = choice.processes};
}

std::optional<runs::RunSummary> readChosen(const std::filesystem::path& folder,
                                           const RunChoice& choice, const runs::Detail& detail) {
  auto run = [&] {
    ProgressLine line("reading " + folder.string());
    return runs::readRun(folder, selectionOf(choice), detail, [&](double done) {
      line.show(done);
      return true;
    });
  }();
  for (const auto& note : run.notes)
    message(note);
  if (!run.empty()) return run;
  tellEmpty(folder, run.end);
  return std::nullopt;
}

bool isResultFile(const std::string& path, const std::filesystem::path& folder) {
  std::error_code error;
  for (const auto& file : runs::listResultFiles(folder)) {
    if (!std::filesystem::equivalent(path, file.path, error)) continue;
    message(path + " holds samples of the run; name another file");
    return true;
  }
  return false;
}

void tellEmpty(const std::filesystem::path& folder, double end) {
  char text[64];
  std::snprintf(text, sizeof text, " ends at %.1f s", end);
  message(end < 0 ? "nothing could be read from " + folder.string()
                  : "no sample lies between --from and --to: " + folder.string() + text);
}

std::string labelOf(const std::filesystem::path& folder) {
  return runs::plainFolder(folder).filename().string();
}
