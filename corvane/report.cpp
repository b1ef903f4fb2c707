#include "report.h"

#include <algorithm>

#include "message.h"
#include "new_file.h"
#include "page/report_page.h"
#include "run_files.h"
#include "standard_output.h"

namespace {

constexpr runs::Detail everything{
    .envelopes = true, .processEnvelopes = runs::Envelope::detailedCapacity, .moments = true};

/// What each run is called: its folder's name, with the folders above it that tell it from others
/// of the same name.
std::vector<std::string> labelsOf(const std::vector<std::filesystem::path>& folders) {
  std::vector<std::string> labels;
  std::vector<std::filesystem::path> above;
  for (const auto& folder : folders) {
    labels.push_back(labelOf(folder));
    above.push_back(runs::plainFolder(std::filesystem::absolute(folder)).parent_path());
  }
  for (bool longer = true; longer;) {
    longer = false;
    const auto before = labels;
    for (std::size_t i = 0; i < labels.size(); ++i) {
      if (std::ranges::count(before, before[i]) == 1 || !above[i].has_filename()) continue;
      labels[i] = above[i].filename().string().append("/").append(labels[i]);
      above[i] = above[i].parent_path();
      longer = true;
    }
  }
  return labels;
}

}  // namespace

int report(const ReportOptions& options) {
  std::vector<std::filesystem::path> folders;
  for (const auto& run : options.runs.empty() ? std::vector{std::string()} : options.runs) {
    folders.push_back(chosenRun(run));
    if (folders.back().empty()) return Status::wrongUse;
  }
  const auto path = options.output.empty() ? labelOf(folders.front()) + ".html" : options.output;
  if (std::ranges::any_of(folders, [&](const auto& folder) { return isResultFile(path, folder); }))
    return Status::wrongUse;
  NewFile file(path);
  ReportPage page([&file](std::string_view text) { file.put(text); });
  const auto labels = labelsOf(folders);
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const auto run = readChosen(folders[i], options.choice, everything);
    if (!run || file.hasFailed()) return Status::wrongUse;
    page.add(*run, labels[i]);
  }
  page.setPart(selectionOf(options.choice));
  page.finish();
  if (!file.commit()) return Status::wrongUse;
  return options.output.empty() && !putOut(path + "\n") ? Status::wrongUse : Status::done;
}
