#include "run_folder.h"

#include <dirent.h>

#include "print_line.h"

std::vector<std::string> listRunFolder(const std::string& folder) {
  std::vector<std::string> paths;
  DIR* const listing = opendir(folder.c_str());
  if (listing == nullptr) return paths;
  while (const dirent* entry = readdir(listing)) {
    printLine(std::string("File = ").append(entry->d_name));
    paths.push_back(std::string(folder).append("/").append(entry->d_name));
  }
  closedir(listing);
  return paths;
}

bool isResultFile(const std::string& path) {
  return path.find(".txt") != std::string::npos;
}
