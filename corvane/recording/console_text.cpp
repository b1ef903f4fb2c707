#include "console_text.h"

#include <algorithm>
#include <sstream>

std::vector<std::string> noticesIn(const std::string& console) {
  constexpr std::string_view prefix = "corvane: ";
  std::vector<std::string> notices;
  std::istringstream lines(console);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(prefix)) continue;
    line.erase(0, prefix.size());
    if (std::ranges::find(notices, line) == notices.end()) notices.push_back(line);
  }
  return notices;
}

std::vector<std::string> lastLines(const std::string& console, std::size_t most) {
  std::vector<std::string> last;
  std::istringstream lines(console);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty()) continue;
    last.push_back(line);
    if (last.size() > most) last.erase(last.begin());
  }
  return last;
}
