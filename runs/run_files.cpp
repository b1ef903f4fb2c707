#include "run_files.h"

#include <algorithm>

namespace runs {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view mark = "profiler_";

/// The files' prefix, or nothing where the name is not that of a result file.
std::string prefixOf(const std::string& name) {
  const auto at = name.find(mark);
  const bool isResult = name.ends_with(".txt") && at != 0 && at != std::string::npos;
  return isResult ? name.substr(0, at) : "";
}

}  // namespace

fs::path plainFolder(const fs::path& folder) {
  auto plain = folder.lexically_normal();
  if (!plain.has_filename()) plain = plain.parent_path();
  const bool isNamed = plain.has_filename() && plain != "." && plain.filename() != "..";
  return isNamed || folder.is_absolute() ? plain : plainFolder(fs::absolute(folder));
}

std::vector<ResultFile> listResultFiles(const fs::path& folder) {
  std::vector<ResultFile> files;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    auto prefix = prefixOf(at->path().filename().string());
    if (!prefix.empty()) files.push_back({std::move(prefix), at->path()});
  }
  std::ranges::sort(files, {}, &ResultFile::path);
  return files;
}

fs::path newestRun(const fs::path& results) {
  fs::path newest;
  fs::file_time_type newestTime;
  std::error_code error;
  for (fs::directory_iterator at(results, error), end; !error && at != end; at.increment(error)) {
    std::error_code ignored;
    const auto files = listResultFiles(at->path());
    if (files.empty()) continue;
    // A file grows without its folder's time changing.
    auto time = fs::last_write_time(files.front().path, ignored);
    for (const auto& file : files)
      time = std::max(time, fs::last_write_time(file.path, ignored));
    if (newest.empty() || time > newestTime) {
      newest = at->path();
      newestTime = time;
    }
  }
  return newest;
}

}  // namespace runs
