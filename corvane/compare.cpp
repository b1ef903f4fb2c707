#include "compare.h"

#include <algorithm>
#include <filesystem>
#include <glob.h>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <span>

#include "compare/closest_figures.h"
#include "compare/comparison.h"
#include "compare/condition_check.h"
#include "compare/judge.h"
#include "compare/settings.h"
#include "compare/verdicts.h"
#include "message.h"
#include "new_file.h"
#include "page/report_page.h"
#include "standard_output.h"

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

/// The folder's one true path, by whatever way it is named.
std::filesystem::path truePath(const std::string& folder) {
  std::error_code error;
  const auto path = std::filesystem::weakly_canonical(folder, error);
  return error ? std::filesystem::path(folder) : path;
}

/// Without those that were named before, which would count as further runs.
std::vector<std::string> eachOnce(const std::vector<std::string>& folders) {
  std::set<std::filesystem::path> seen;
  std::vector<std::string> left;
  std::ranges::copy_if(folders, std::back_inserter(left), [&](const std::string& folder) {
    return seen.insert(truePath(folder)).second;
  });
  if (left.size() < folders.size()) {
    message("runs named more than once count once: " + std::to_string(left.size()) + " of " +
            std::to_string(folders.size()));
  }
  return left;
}

/// Says which runs are on both sides, where nothing can differ.
void tellShared(const std::vector<std::string>& base, const std::vector<std::string>& fresh) {
  std::set<std::filesystem::path> others;
  std::ranges::transform(fresh, std::inserter(others, others.end()), truePath);
  std::vector<std::string> shared;
  std::ranges::copy_if(base, std::back_inserter(shared), [&](const std::string& folder) {
    return others.contains(truePath(folder));
  });
  if (!shared.empty()) message("on both sides: " + listed(shared, ", "));
}

/// False, after a message, where a metric of which more is better is none that was compared.
bool areCompared(const std::vector<std::string>& told, const std::vector<Compared>& figures) {
  for (const auto& said : told) {
    const bool isAny = std::ranges::any_of(
        figures, [&](const Compared& figure) { return isCalled(figure.key, said); });
    if (isAny) continue;
    const bool withSource = said.find('.') != said.npos;
    std::set<std::string> names;
    for (const auto& figure : figures)
      names.insert((withSource ? figure.key.source + "." : "") + figure.key.metric);
    message("--more-is-better " + said + ": no metric of both sides is called so" +
            closestFigures(said, {names.begin(), names.end()}));
    return false;
  }
  return true;
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
    if (!conditions_.parse(options_.failIf)) return false;
    const auto base = eachOnce(expanded(options_.base));
    const auto fresh = eachOnce(expanded(options_.fresh));
    tellShared(base, fresh);
    return readSide(Sides::base, base) && readSide(Sides::fresh, fresh);
  }
  Comparison compare() const {
    Comparison result;
    for (const auto side : {Sides::base, Sides::fresh})
      result.runs[side] = folders_[side];
    result.settings = settings_.differences();
    for (const auto side : {Sides::base, Sides::fresh}) {
      const auto only = sides_.onlyOn(side);
      if (!only.empty()) {
        result.settings.push_back(std::string("only ") + (side == Sides::base ? "base" : "new") +
                                  " has " + listed(only, ", "));
      }
    }
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
  bool readSide(Sides::Side side, const std::vector<std::string>& folders) {
    return std::ranges::all_of(folders,
                               [&](const std::string& folder) { return readOne(side, folder); });
  }
  bool readOne(Sides::Side side, const std::string& folder) {
    if (chosenRun(folder).empty()) return false;
    if (page_ && isResultFile(options_.report, folder)) return false;
    const auto run = readChosen(folder, options_.choice,
                                {.envelopes = true,
                                 .processEnvelopes = runs::Envelope::smallCapacity,
                                 .moments = page_.has_value()});
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
  if (comparison.figures.empty()) {
    message("the sides have nothing in common that could be compared");
    return Status::wrongUse;
  }
  if (!areCompared(options.moreIsBetter, comparison.figures)) return Status::wrongUse;
  const auto text =
      options.json ? comparisonJson(comparison) : comparisonText(comparison, options.all);
  if (!putOut(text) || !reading.finishPage(comparison)) return Status::wrongUse;
  return reading.conditions().report();
}
