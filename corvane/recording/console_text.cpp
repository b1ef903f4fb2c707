#include "console_text.h"

#include <algorithm>
#include <filesystem>
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

std::optional<UnwrittenFile> unwrittenFile(const std::string& notice) {
  constexpr std::string_view conversion = " cannot be written";
  for (const std::string_view ending :
       {"; it keeps what was written and takes no more", "; it is incomplete"}) {
    if (!notice.ends_with(ending)) continue;
    const auto text = notice.substr(0, notice.size() - ending.size());
    const auto colon = text.rfind(": ");
    if (colon == text.npos) continue;
    auto path = text.substr(0, colon);
    if (path.ends_with(conversion)) path.resize(path.size() - conversion.size());
    return UnwrittenFile{.file = std::filesystem::path(path).filename().string(),
                         .reason = text.substr(colon + 2)};
  }
  return {};
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
