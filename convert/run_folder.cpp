#include "run_folder.h"

#include <dirent.h>
#include <iostream>

std::vector<std::string> listRunFolder(const std::string& folder) {
  std::vector<std::string> paths;
  DIR* const listing = opendir(folder.c_str());
  if (listing == nullptr) return paths;
  while (const dirent* entry = readdir(listing)) {
    std::cout << "File = " << entry->d_name << std::endl;
    paths.push_back(folder + "/" + entry->d_name);
  }
  closedir(listing);
  return paths;
}

bool isResultFile(const std::string& path) {
  return path.find(".txt") != std::string::npos;
}
