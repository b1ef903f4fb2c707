#include "report.h"

#include "message.h"
#include "new_file.h"
#include "page/report_page.h"
#include "standard_output.h"

namespace {

constexpr runs::Detail everything{.envelopes = true, .processEnvelopes = true, .moments = true};

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
    const auto run = readChosen(folder, options.choice, everything);
    if (!run || file.hasFailed()) return Status::wrongUse;
    page.add(*run, labelOf(folder));
  }
  page.finish();
  if (!file.commit()) return Status::wrongUse;
  return options.output.empty() && !putOut(path + "\n") ? Status::wrongUse : Status::done;
}
