#include <algorithm>
#include <cmath>
#include <cstdio>

#include "comparison.h"
#include "printable.h"

namespace {

constexpr std::size_t nameWidth = 23;

/// Four significant digits, never an exponent for what a profiler measures.
std::string number(double value) {
  char text[40];
  const double size = std::abs(value);
  const int decimals = size >= 1000 ? 0 : size >= 100 ? 1 : size >= 10 ? 2 : size >= 1 ? 3 : 4;
  std::snprintf(text, sizeof text, "%.*f", value == 0 ? 0 : decimals, value);
  return text;
}

std::string percentText(const Compared& figure) {
  const auto percent = figure.percent();
  if (!percent) return figure.fresh == 0 ? "" : "from 0";
  char text[40];
  std::snprintf(text, sizeof text, std::abs(*percent) < 999.5 ? "%+.1f%%" : "%+.0f%%", *percent);
  return text;
}

/// The interval as a share of the base value, which is how a change is thought of.
std::string intervalText(const Compared& figure) {
  if (!figure.difference) return "";
  char text[80];
  if (figure.base != 0) {
    const double scale = 100 / std::abs(figure.base);
    std::snprintf(text, sizeof text, "%+.1f..%+.1f%%", figure.difference->low * scale,
                  figure.difference->high * scale);
    return text;
  }
  return number(figure.difference->low) + ".." + number(figure.difference->high);
}

std::string nameOfFigure(const FigureKey& key) {
  std::string name = key.source;
  const bool said = key.metric.starts_with(key.entity);  // a core's metrics bear its name
  if (!key.entity.empty() && !said) name += " " + key.entity;
  if (key.source != "proc" && key.source != "procmem") name += " " + key.metric;
  return name;
}

void addRow(std::string& text, const Compared& figure) {
  char row[256];
  std::snprintf(row, sizeof row, "%s %9s %9s %-4s %7s %16s %.6s\n",
                printable(nameOfFigure(figure.key), nameWidth).c_str(), number(figure.base).c_str(),
                number(figure.fresh).c_str(), figure.key.unit.c_str(), percentText(figure).c_str(),
                intervalText(figure).c_str(),
                figure.verdict == Verdict::inconclusive ? "?" : nameOf(figure.verdict).data());
  text += row;
}

void addHead(std::string& text, const Comparison& comparison) {
  const char* const sides[] = {"base", "new "};
  for (int side = 0; side < 2; ++side) {
    const auto& runs = comparison.runs[side];
    text += std::string(sides[side]) + "  " + printable(runs.front());
    if (runs.size() > 1) text += " and " + std::to_string(runs.size() - 1) + " more";
    text += "\n";
  }
  if (!comparison.settings.empty()) {
    text += "Not the same on both sides:\n";
    for (const auto& difference : comparison.settings)
      text += "  " + printable(difference) + "\n";
  }
  text += "\n";
}

struct Counts {
  std::size_t of[4] = {};
  std::size_t operator[](Verdict verdict) const { return of[std::size_t(verdict)]; }
};

std::string countsText(const Counts& counts) {
  return std::to_string(counts[Verdict::worse]) + " worse, " +
         std::to_string(counts[Verdict::better]) + " better, " +
         std::to_string(counts[Verdict::same]) + " the same, " +
         std::to_string(counts[Verdict::inconclusive]) + " with too little to tell\n";
}

double weight(const Compared& figure) {
  const auto percent = figure.percent();
  return percent ? std::abs(*percent) : HUGE_VAL;
}

}  // namespace

std::string comparisonText(const Comparison& comparison, bool all) {
  std::string text;
  addHead(text, comparison);
  Counts counts;
  std::vector<const Compared*> rows;
  for (const auto& figure : comparison.figures) {
    ++counts.of[std::size_t(figure.verdict)];
    const bool changed = figure.verdict == Verdict::worse || figure.verdict == Verdict::better;
    if (all || changed) rows.push_back(&figure);
  }
  if (!all) {
    std::ranges::stable_sort(rows, [](const Compared* a, const Compared* b) {
      if (a->verdict != b->verdict) return a->verdict == Verdict::worse;
      return weight(*a) > weight(*b);
    });
  }
  if (!rows.empty()) {
    text += "                             base       new       change    95 % interval\n";
    for (const auto* figure : rows)
      addRow(text, *figure);
    text += "\n";
  }
  return text + countsText(counts);
}
