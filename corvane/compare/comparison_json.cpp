#include <nlohmann/json.hpp>

#include "comparison.h"

namespace {

using Json = nlohmann::ordered_json;

Json figureOf(const Compared& figure) {
  const auto& difference = figure.difference;
  const auto percent = figure.percent();
  return {{"source", figure.key.source},
          {"entity", figure.key.entity},
          {"metric", figure.key.metric},
          {"unit", figure.key.unit},
          {"base", figure.base},
          {"new", figure.fresh},
          {"difference", figure.fresh - figure.base},
          {"percent", percent ? Json(*percent) : Json()},
          {"low", difference ? Json(difference->low) : Json()},
          {"high", difference ? Json(difference->high) : Json()},
          {"p", difference ? Json(difference->p) : Json()},
          {"verdict", nameOf(figure.verdict)},
          {"held_back", figure.heldBack}};
}

Json conditionOf(const ConditionCheck::Outcome& outcome) {
  const auto known = [&](double value) { return outcome.known ? Json(value) : Json(); };
  return {{"condition", outcome.condition->text},
          {"base", known(outcome.base)},
          {"new", known(outcome.fresh)},
          {"holds", outcome.known ? Json(outcome.holds) : Json()}};
}

}  // namespace

std::string comparisonJson(const Comparison& comparison) {
  auto metrics = Json::array();
  for (const auto& figure : comparison.figures)
    metrics.push_back(figureOf(figure));
  auto conditions = Json::array();
  for (const auto& outcome : comparison.conditions)
    conditions.push_back(conditionOf(outcome));
  const Json all{{"runs", {{"base", comparison.runs[0]}, {"new", comparison.runs[1]}}},
                 {"settings", comparison.settings},
                 {"metrics", std::move(metrics)},
                 {"conditions", std::move(conditions)}};
  // Names may hold any bytes.
  return all.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

nlohmann::json comparisonTable(const Comparison& comparison) {
  auto rows = nlohmann::json::array();
  std::size_t same = 0;
  for (const auto& figure : comparison.figures) {
    if (figure.verdict == Verdict::same) {
      ++same;
      continue;
    }
    const auto percent = figure.percent();
    const auto& bounds = figure.difference;
    rows.push_back({figure.key.source, figure.key.entity, figure.key.metric, figure.key.unit,
                    figure.base, figure.fresh, percent ? Json(*percent) : Json(),
                    bounds ? Json(bounds->low) : Json(), bounds ? Json(bounds->high) : Json(),
                    nameOf(figure.verdict)});
  }
  std::string note = std::to_string(same) + " figures are the same on both sides.";
  for (const auto& difference : comparison.settings)
    note += " Not the same on both sides: " + difference + ".";
  const auto column = [](const char* title, const char* unit = "") {
    return nlohmann::json{{"title", title}, {"unit", unit}};
  };
  const auto number = [](const char* title, const char* unit, int decimals) {
    return nlohmann::json{{"title", title}, {"unit", unit}, {"decimals", decimals}};
  };
  return {{"title", "What differs between base and new"},
          {"note", note},
          {"columns",
           {column("Source"),
            column("Of"),
            column("Metric"),
            column("Unit"),
            number("Base", "", 2),
            number("New", "", 2),
            number("Change", "%", 1),
            number("At least", "", 2),
            number("At most", "", 2),
            {{"title", "Verdict"}, {"unit", ""}, {"verdict", true}}}},
          {"rows", std::move(rows)}};
}
