#include "console_text.h"

#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
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

std::vector<std::string> namesIn(int folder) {
  std::vector<std::string> names;
  const int own = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (own < 0) return names;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(own), ::closedir);
  while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr)
    names.emplace_back(entry->d_name);
  return names;
}
