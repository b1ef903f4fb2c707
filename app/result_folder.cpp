#include "result_folder.h"

#include <cerrno>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "console.h"
#include "run_parameters.h"

namespace {

const std::string baseFolder = "Results_corvane";

/// The folders are made without search permission, which stops everybody but root: the owner's is
/// added where this process needs it.
void makeSearchable(const std::string& folder) {
  struct stat info{};
  if (::access(folder.c_str(), X_OK) == 0 || ::stat(folder.c_str(), &info) != 0) return;
  if (S_ISDIR(info.st_mode) && info.st_uid == ::geteuid()) {
    ::chmod(folder.c_str(), (info.st_mode & 07777) | S_IXUSR);
  }
}

void makeFolder(const std::string& folder) {
  const int error = ::mkdir(folder.c_str(), 0666) == 0 ? 0 : errno;
  makeSearchable(folder);
  if (error == 0) {
    say("Directory creation successful.\n");
  } else if (error == EEXIST) {
    say(baseFolder + " exists.\n");
  } else {
    say("Directory creation failed with error = " + std::to_string(error) + "\n");
  }
}

}  // namespace

std::string getCurrentTime() {
  const time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  char text[24];
  return {text, strftime(text, sizeof text, "%Y-%m-%d.%X", &local)};
}

void setupDirectoryStructure() {
  makeFolder(baseFolder);
  say("Creating the log folder now.\n");
  logFolder = baseFolder + "/" + filename;
  makeFolder(logFolder);
  say("The logFolder is " + logFolder + "\n");
}
