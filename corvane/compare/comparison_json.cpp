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
          {"verdict", nameOf(figure.verdict)}};
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
