#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "conditions.h"

namespace {

constexpr std::string_view processPrefix = "process:";

struct Alias {
  std::string_view said, word;
};
constexpr Alias sourceAliases[] = {
    {"memory", "mem"}, {"disk", "io"}, {"network", "net"}, {"process", "proc"}};

std::string sourceWord(std::string_view said) {
  for (const auto& alias : sourceAliases) {
    if (alias.said == said) return std::string(alias.word);
  }
  return std::string(said);
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/// Takes what follows the last point off.
std::string cutLast(std::string_view& text) {
  const auto point = text.rfind('.');
  if (point == text.npos) return {};
  const auto last = text.substr(point + 1);
  text = text.substr(0, point);
  return std::string(last);
}

/// Names hold points themselves, so a target is read from its end.
bool readTarget(std::string_view target, Condition& condition) {
  condition.statistic = cutLast(target);
  condition.figure = target;
  condition.metric = cutLast(target);
  if (target.starts_with(processPrefix)) {
    condition.source = "process";
    condition.entity = target.substr(processPrefix.size());
    return !condition.entity.empty() && !condition.metric.empty();
  }
  const auto point = target.find('.');
  condition.source = sourceWord(target.substr(0, point));
  if (point != target.npos) condition.entity = target.substr(point + 1);
  if (condition.source.empty() || condition.metric.empty()) return false;
  condition.figure = condition.source + "." +
                     (condition.entity.empty() ? "" : condition.entity + ".") + condition.metric;
  return true;
}

/// Whether there is such a statistic of the target; else what there is, in `problem`.
bool checkStatistic(const Condition& condition, std::string& problem) {
  const bool ofProcess = condition.source == "process";
  if (ofProcess && condition.metric != "cpu" && condition.metric != "pss") {
    problem = "of a process there are cpu and pss";
    return false;
  }
  const std::string_view known = !ofProcess                  ? "mean min max p50 p95 p99"
                                 : condition.metric == "cpu" ? "mean max seconds"
                                                             : "mean max first last growth";
  const auto padded = " " + std::string(known) + " ";
  if (padded.find(" " + condition.statistic + " ") != padded.npos) return true;
  problem = "no statistic '" + condition.statistic + "' of " + condition.figure + "; there are " +
            std::string(known);
  return false;
}

/// In the units of the files: KB, MB/s, %.
bool readUnit(std::string_view unit, Condition& condition) {
  struct Scale {
    std::string_view name, of;
    double factor;
  };
  constexpr Scale scales[] = {{"", "", 1},
                              {"points", "%", 1},
                              {"KB", "KB", 1},
                              {"MB", "KB", 1024},
                              {"GB", "KB", 1 << 20},
                              {"MB/s", "MB/s", 1},
                              {"KB/s", "MB/s", 1.0 / 1024},
                              {"GB/s", "MB/s", 1024},
                              {"MHz", "MHz", 1},
                              {"Hz", "Hz", 1},
                              {"s", "s", 1}};
  if (unit == "%") {
    condition.relative = true;
    return true;
  }
  for (const auto& scale : scales) {
    if (scale.name != unit) continue;
    condition.change *= scale.factor;
    condition.unit = scale.of;
    return true;
  }
  return false;
}

/// A plain decimal number; what follows it is left in `text`.
std::optional<double> cutNumber(std::string_view& text) {
  const auto length = std::min(text.find_first_not_of("+-.0123456789"), text.size());
  const std::string digits(text.substr(0, length));
  char* end = nullptr;
  const double value = std::strtod(digits.c_str(), &end);
  if (digits.empty() || end != digits.c_str() + digits.size() || !std::isfinite(value))
    return std::nullopt;
  text.remove_prefix(length);
  return value;
}

bool readChange(std::string_view text, Condition& condition, std::string& problem) {
  if (!text.starts_with('+') && !text.starts_with('-')) {
    problem = R"(a change begins with + or -, as in "> +5%" or "> +10MB")";
    return false;
  }
  const auto change = cutNumber(text);
  if (!change) {
    problem = "no number in the change";
    return false;
  }
  condition.change = *change;
  if (readUnit(trimmed(text), condition)) return true;
  problem = "unknown unit; there are %, points, KB, MB, GB, KB/s, MB/s, GB/s, MHz, Hz, s";
  return false;
}

}  // namespace

std::optional<Condition> parseCondition(std::string_view text, std::string& problem) {
  Condition condition;
  condition.text = text;
  // A name may hold such a sign, a change does not.
  const auto sign = text.find_last_of("<>");
  if (sign == text.npos) {
    problem = "no > or < in it";
    return std::nullopt;
  }
  condition.above = text[sign] == '>';
  const auto target = trimmed(text.substr(0, sign));
  const auto change = trimmed(text.substr(sign + 1));
  if (target.ends_with('=') || change.starts_with('=')) {
    problem = "what compares is > or <, without =";
    return std::nullopt;
  }
  if (!readTarget(target, condition)) {
    problem = "what is compared is SOURCE[.ENTITY].METRIC.STATISTIC or process:NAME.pss.STATISTIC";
    return std::nullopt;
  }
  if (!checkStatistic(condition, problem) || !readChange(change, condition, problem))
    return std::nullopt;
  return condition;
}
