#include "run_folder.h"

#include <dirent.h>
#include <fcntl.h>

#include "print_line.h"

std::vector<FilePath> listRunFolder(const Folder& folder) {
  std::vector<FilePath> paths;
  const int descriptor = fcntl(folder.descriptor(), F_DUPFD_CLOEXEC, 0);
  DIR* const listing = descriptor < 0 ? nullptr : fdopendir(descriptor);
  if (listing == nullptr) return paths;
  rewinddir(listing);  // an earlier listing has left the descriptors at its end
  while (const dirent* entry = readdir(listing)) {
    printLine(std::string("File = ").append(entry->d_name));
    paths.emplace_back(folder.path() + "/" + entry->d_name, &folder);
  }
  closedir(listing);
  return paths;
}

bool isResultFile(const std::string& path) {
  return path.find(".txt") != std::string::npos;
}
