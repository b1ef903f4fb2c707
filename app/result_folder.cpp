#include "result_folder.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "console.h"
#include "kinds.h"
#include "run_folder.h"
#include "run_parameters.h"

namespace {

const std::string baseFolder = "Results_corvane";
const Folder* heldRunFolder = nullptr;

/// The folders are made without search permission, which stops everybody but root: the owner's is
/// added where this process needs it.
void makeSearchable(int folder) {
  struct stat info{};
  if (::fstatat(folder, ".", &info, 0) == 0 || errno != EACCES) return;
  if (::fstat(folder, &info) == 0 && info.st_uid == ::geteuid())
    ::fchmod(folder, (info.st_mode & 07777) | S_IXUSR);
}

void tellMade(int result) {
  if (result == 0) {
    say("Directory creation successful.\n");
  } else if (errno == EEXIST) {
    say(baseFolder + " exists.\n");
  } else {
    say("Directory creation failed with error = " + std::to_string(errno) + "\n");
  }
}

/// Opens the folder that a link is to, where root or this user has made the link.
int openLinked(const char* path) {
  const int link = ::open(path, O_PATH | O_NOFOLLOW | O_CLOEXEC);
  if (link < 0) return -1;
  struct stat info{};
  char target[PATH_MAX + 1] = "";
  int folder = -1, error = EACCES;
  if (::fstat(link, &info) != 0 || !S_ISLNK(info.st_mode)) {
    error = ENOTDIR;
  } else if (info.st_uid != 0 && info.st_uid != ::geteuid()) {
    warn(baseFolder + " is a link of user " + std::to_string(info.st_uid) +
         ", which is not followed");
  } else if (::readlinkat(link, "", target, PATH_MAX) > 0) {
    folder = openFolder(AT_FDCWD, target);
    error = errno;
  }
  ::close(link);
  errno = error;
  return folder;
}

Folder openBaseFolder() {
  int folder = openFolder(AT_FDCWD, baseFolder.c_str(), O_NOFOLLOW);
  if (folder < 0 && errno == ENOTDIR) folder = openLinked(baseFolder.c_str());
  return {baseFolder, folder};
}

/// Whoever owns a folder can put another in its place.
bool tellOwner(const Folder& folder) {
  struct stat info{};
  if (::geteuid() != 0 || ::fstat(folder.descriptor(), &info) != 0 || info.st_uid == 0)
    return false;
  warn(folder.path() + " belongs to user " + std::to_string(info.st_uid) +
       ", who can remove or replace what is written there");
  return true;
}

/// A folder's name counts as a part of its files' names.
void tellUnusualSuffix() {
  const auto names = [](const Kind& kind) { return isFileOf(kind, filename); };
  if (("/" + filename + "/").find("/../") != std::string::npos) {
    warn("with \"..\" in the suffix the results lie in " + logFolder);
  } else if (isResultFile(filename)) {
    warn("with \".txt\" in its name everything in " + logFolder + " is taken for a result file");
  } else if (std::ranges::any_of(allKinds, names)) {
    warn("with the name of a source's files in its own, each result file in " + logFolder +
         " is taken for one of that source, too");
  }
}

/// Makes the run folder, or finds it.
Folder makeRunFolder(const Folder& base) {
  errno = ENAMETOOLONG;  // as the kernel has it for a path of that length
  int made = -1;
  if (filename.find_first_not_of('/') == std::string::npos) {
    made = ::mkdir(logFolder.c_str(), 0666);  // no name at all: the base folder itself
  } else if (logFolder.size() < PATH_MAX) {
    made = base.makeFolder(filename, 0666);
  }
  const bool exists = made == 0 || errno == EEXIST;
  tellMade(made);
  Folder folder(logFolder, base.openFolder(filename), &base);
  if (exists && folder.descriptor() < 0) {
    warn(logFolder + " cannot be entered: " +
         (errno == ENOTDIR ? "it is no folder, or a link, which is not followed here"
                           : std::strerror(errno)));
  }
  return folder;
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
  tellMade(::mkdir(baseFolder.c_str(), 0666));
  // Held to the end of the process, collectors that run on under it included.
  const auto& base = *new Folder(openBaseFolder());
  makeSearchable(base.descriptor());
  say("Creating the log folder now.\n");
  logFolder = baseFolder + "/" + filename;
  heldRunFolder = new Folder(makeRunFolder(base));
  makeSearchable(heldRunFolder->descriptor());
  say("The logFolder is " + logFolder + "\n");
  if (!tellOwner(base)) tellOwner(*heldRunFolder);
  tellUnusualSuffix();
}

const Folder& runFolder() {
  return *heldRunFolder;
}
