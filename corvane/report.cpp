#include "report.h"

#include <cstdio>
#include <filesystem>

#include "message.h"
#include "new_file.h"
#include "page/report_page.h"
#include "progress.h"
#include "run_summary.h"

namespace {

constexpr runs::Detail everything{.envelopes = true, .processEnvelopes = true, .moments = true};

std::string labelOf(const std::filesystem::path& folder) {
  const auto whole = std::filesystem::absolute(folder).lexically_normal();
  return (whole.has_filename() ? whole : whole.parent_path()).filename().string();
}

/// Whether anything could be read from the run.
bool addRun(ReportPage& page, const std::filesystem::path& folder, const RunChoice& choice) {
  ProgressLine line("reading " + folder.string());
  const auto run = runs::readRun(folder, selectionOf(choice), everything, [&](double done) {
    line.show(done);
    return true;
  });
  for (const auto& note : run.notes)
    message(note);
  if (run.empty()) {
    message("nothing could be read from " + folder.string());
    return false;
  }
  page.add(run, labelOf(folder));
  return true;
}

}  // namespace

int report(const ReportOptions& options) {
  std::vector<std::filesystem::path> folders;
  for (const auto& run : options.runs.empty() ? std::vector{std::string()} : options.runs) {
    folders.push_back(chosenRun(run));
    if (folders.back().empty()) return Status::wrongUse;
  }
  const auto path = options.output.empty() ? labelOf(folders.front()) + ".html" : options.output;
  NewFile file(path);
  ReportPage page([&file](std::string_view text) { file.put(text); });
  for (const auto& folder : folders) {
    if (file.hasFailed() || !addRun(page, folder, options.choice)) return Status::wrongUse;
  }
  page.finish();
  if (!file.commit()) return Status::wrongUse;
  if (options.output.empty()) std::puts(path.c_str());
  return Status::done;
}
