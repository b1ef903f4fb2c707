#include <algorithm>
#include <cmath>
#include <cstdio>

#include "comparison.h"
#include "number_text.h"
#include "printable.h"

namespace {

constexpr std::size_t nameWidth = 23;

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
  return numberText(figure.difference->low) + ".." + numberText(figure.difference->high);
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
                printable(nameOfFigure(figure.key), nameWidth).c_str(),
                numberText(figure.base).c_str(), numberText(figure.fresh).c_str(),
                figure.key.unit.c_str(), changeText(figure.base, figure.fresh).c_str(),
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

void addRows(std::string& text, const std::vector<const Compared*>& rows) {
  for (const auto* figure : rows)
    addRow(text, *figure);
  text += "\n";
}

/// What the figure's own test is sure of, but not among so many figures: the surest of them.
void addHeldBack(std::string& text, std::vector<const Compared*> rows) {
  constexpr std::size_t most = 5;
  if (rows.empty()) return;
  std::ranges::stable_sort(rows, [](const Compared* a, const Compared* b) {
    if (a->difference->p != b->difference->p) return a->difference->p < b->difference->p;
    return weight(*a) > weight(*b);
  });
  text += "May have changed, or by chance, among so many; more runs would tell:\n";
  const std::size_t shown = std::min(most, rows.size());
  const std::size_t more = rows.size() - shown;
  rows.resize(shown);
  addRows(text, rows);
  if (more == 0) return;
  text.pop_back();
  text += "and " + std::to_string(more) + " more\n\n";
}

}  // namespace

std::string comparisonText(const Comparison& comparison, bool all) {
  std::string text;
  addHead(text, comparison);
  Counts counts;
  std::vector<const Compared*> rows;
  std::vector<const Compared*> heldBack;
  for (const auto& figure : comparison.figures) {
    ++counts.of[std::size_t(figure.verdict)];
    const bool changed = figure.verdict == Verdict::worse || figure.verdict == Verdict::better;
    if (all || changed) {
      rows.push_back(&figure);
    } else if (figure.heldBack) {
      heldBack.push_back(&figure);
    }
  }
  if (!all) {
    std::ranges::stable_sort(rows, [](const Compared* a, const Compared* b) {
      if (a->verdict != b->verdict) return a->verdict == Verdict::worse;
      return weight(*a) > weight(*b);
    });
  }
  if (!rows.empty() || !heldBack.empty())
    text += "                             base       new       change    95 % interval\n";
  if (!rows.empty()) addRows(text, rows);
  addHeldBack(text, heldBack);
  return text + countsText(counts);
}
