#include "compare.h"

#include <cstdio>
#include <filesystem>
#include <glob.h>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>

#include "compare/comparison.h"
#include "compare/condition_check.h"
#include "compare/settings.h"
#include "compare/verdicts.h"
#include "message.h"
#include "new_file.h"
#include "page/report_page.h"

namespace {

/// The folders that the words name or match, in their order.
std::vector<std::string> expanded(const std::vector<std::string>& words) {
  std::vector<std::string> folders;
  for (const auto& word : words) {
    glob_t found{};
    if (::glob(word.c_str(), GLOB_NOCHECK, nullptr, &found) == 0) {
      for (const std::string path : std::span(found.gl_pathv, found.gl_pathc)) {
        // What lies beside the folders is not meant; what is named and missing is for the reader to
        // say.
        if (path == word || std::filesystem::is_directory(path)) folders.push_back(path);
      }
    }
    ::globfree(&found);
  }
  return folders;
}

/// Reads the runs of both sides, each once, and hands them on to all that want to know of them.
class Reading {
 public:
  explicit Reading(const CompareOptions& options) : options_(options) {
    if (options.report.empty()) return;
    file_ = std::make_unique<NewFile>(options.report);
    page_.emplace([this](std::string_view text) { file_->put(text); });
  }

  /// False, after a message, where there is nothing to compare.
  bool read() {
    return conditions_.parse(options_.failIf) && readSide(Sides::base, options_.base) &&
           readSide(Sides::fresh, options_.fresh);
  }
  Comparison compare() const {
    Comparison result;
    for (const auto side : {Sides::base, Sides::fresh})
      result.runs[side] = folders_[side];
    result.settings = settings_.differences();
    result.figures = sides_.compare(
        {.atLeastPercent = options_.atLeastPercent, .moreIsBetter = options_.moreIsBetter});
    result.conditions = conditions_.outcomes();
    return result;
  }
  /// False, after a message, where the page that was asked for could not be written.
  bool finishPage(const Comparison& comparison) {
    if (!page_) return true;
    page_->addTable(comparisonTable(comparison));
    page_->finish();
    return file_->commit();
  }
  const ConditionCheck& conditions() const { return conditions_; }

 private:
  bool readSide(Sides::Side side, const std::vector<std::string>& words) {
    for (const auto& folder : expanded(words)) {
      if (!readOne(side, folder)) return false;
    }
    return true;
  }
  bool readOne(Sides::Side side, const std::string& folder) {
    if (chosenRun(folder).empty()) return false;
    const auto run =
        readChosen(folder, options_.choice,
                   {.envelopes = true, .processEnvelopes = true, .moments = page_.has_value()});
    if (!run) return false;
    sides_.add(side, *run);
    settings_.add(side, *run);
    conditions_.add(side, *run);
    if (page_) page_->add(*run, (side == Sides::base ? "base " : "new ") + labelOf(folder), side);
    folders_[side].push_back(folder);
    return true;
  }

  const CompareOptions& options_;
  std::vector<std::string> folders_[2];
  Sides sides_;
  Settings settings_;
  ConditionCheck conditions_;
  std::unique_ptr<NewFile> file_;
  std::optional<ReportPage> page_;
};

}  // namespace

int compare(const CompareOptions& options) {
  Reading reading(options);
  if (!reading.read()) return Status::wrongUse;
  const auto comparison = reading.compare();
  const auto text =
      options.json ? comparisonJson(comparison) : comparisonText(comparison, options.all);
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (std::fflush(stdout) != 0 || !reading.finishPage(comparison)) return Status::wrongUse;
  return reading.conditions().report();
}
