#pragma once

#include <cstddef>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "run_summary.h"
#include "sample_arrays.h"

/// A page of one or several runs in one HTML file that fetches nothing. It is handed on in pieces
/// while runs are added, so that no more than one of them needs to be in memory.
class ReportPage {
 public:
  explicit ReportPage(Put put);

  /// A run with its envelopes and moments; without them it is in the tables only. `label` is what
  /// the page calls it. Runs of one `side` have one colour; without it each has its own.
  void add(const runs::RunSummary& run, const std::string& label, std::optional<int> side = {});

  /// Puts a table in front: {"title", "note", "columns": [{"title", "unit", "decimals"}], "rows":
  /// [[...]]}. A column with decimals holds numbers or null; one with "verdict": true the words
  /// better, worse, same, inconclusive; any other one text. Texts may be anything.
  void addTable(const nlohmann::json& table);

  /// Says that the page is of a part of each run: from one second of it to another (which may be
  /// infinite), or of those processes alone. Without this it is of all.
  void setPart(const runs::Selection& part);

  /// Ends the page.
  void finish();

 private:
  Put put_;
  SampleArrays samples_;
  std::string runs_, tables_;  // JSON, separated by commas
  std::string part_ = "null";
};
