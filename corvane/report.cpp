#include "report.h"

#include <algorithm>

#include "message.h"
#include "new_file.h"
#include "page/report_page.h"
#include "standard_output.h"

namespace {

constexpr runs::Detail everything{.envelopes = true, .processEnvelopes = true, .moments = true};

/// What each run is called: where two folders have one name, the paths as they were given.
std::vector<std::string> labelsOf(const std::vector<std::filesystem::path>& folders) {
  std::vector<std::string> names, labels;
  for (const auto& folder : folders)
    names.push_back(labelOf(folder));
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool alone = std::ranges::count(names, names[i]) == 1;
    labels.push_back(alone ? names[i] : folders[i].string());
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
  NewFile file(path);
  ReportPage page([&file](std::string_view text) { file.put(text); });
  const auto labels = labelsOf(folders);
  for (std::size_t i = 0; i < folders.size(); ++i) {
    const auto run = readChosen(folders[i], options.choice, everything);
    if (!run || file.hasFailed()) return Status::wrongUse;
    page.add(*run, labels[i]);
  }
  page.finish();
  if (!file.commit()) return Status::wrongUse;
  return options.output.empty() && !putOut(path + "\n") ? Status::wrongUse : Status::done;
}
