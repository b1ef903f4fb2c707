#include "folder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Nobody is waited for: neither for a fifo's other side nor for the holder of a lease.
constexpr int fileFlags = O_CLOEXEC | O_NONBLOCK;
constexpr int linkRefused = ELOOP, otherNamesRefused = EMLINK, kindRefused = ENODEV;

void closeKeepingError(int descriptor) {
  const int error = errno;
  ::close(descriptor);
  errno = error;
}

/// Cuts the path's first name off; "." where there is none.
std::string cutName(std::string_view& path) {
  const auto skipSlashes = [&path] {
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
  };
  skipSlashes();
  const auto name = path.substr(0, path.find('/'));
  path.remove_prefix(name.size());
  skipSlashes();
  return name.empty() ? "." : std::string(name);
}

/// As ::open.
int openAt(const FilePath& file, int flags, mode_t mode = 0) {
  for (const auto* folder = file.in; folder != nullptr; folder = folder->above()) {
    if (file.path.starts_with(folder->path() + "/"))
      return folder->open(file.path.substr(folder->path().size()), flags, mode);
  }
  return ::open(file.path.c_str(), flags, mode);
}

/// The descriptor, or -1 with the reason in errno where that is not 0.
int unless(int refused, int descriptor) {
  if (refused == 0) return descriptor;
  ::close(descriptor);
  errno = refused;
  return -1;
}

}  // namespace

int openFolder(int where, const char* path, int flags) {
  flags |= O_DIRECTORY | O_CLOEXEC;
  const int descriptor = ::openat(where, path, flags | O_RDONLY);
  return descriptor < 0 && errno == EACCES ? ::openat(where, path, flags | O_PATH) : descriptor;
}

Folder::Folder(std::string path) : Folder(path, ::openFolder(AT_FDCWD, path.c_str())) {}

Folder::Folder(std::string path, int descriptor, const Folder* above)
    : path_(std::move(path)), descriptor_(descriptor), error_(errno), above_(above) {}

Folder::Folder(Folder&& other) noexcept
    : path_(std::move(other.path_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      error_(other.error_),
      above_(other.above_) {}

Folder::~Folder() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

template <class Call>
int Folder::atLastName(std::string_view path, Call call) const {
  errno = error_;
  int folder = descriptor_;
  while (folder >= 0) {
    const auto name = cutName(path);
    const int result = path.empty() ? call(folder, name.c_str())
                                    : ::openFolder(folder, name.c_str(), O_PATH | O_NOFOLLOW);
    if (folder != descriptor_) closeKeepingError(folder);
    if (path.empty()) return result;
    folder = result;
  }
  return -1;
}

int Folder::open(const std::string& below, int flags, mode_t mode) const {
  return atLastName(below, [=](int folder, const char* name) {
    return ::openat(folder, name, flags | O_NOFOLLOW, mode);
  });
}

int Folder::openFolder(const std::string& below) const {
  return atLastName(
      below, [](int folder, const char* name) { return ::openFolder(folder, name, O_NOFOLLOW); });
}

int Folder::makeFolder(const std::string& below, mode_t mode) const {
  return atLastName(below,
                    [=](int folder, const char* name) { return ::mkdirat(folder, name, mode); });
}

int openToRead(const FilePath& file) {
  const int descriptor = openAt(file, O_RDONLY | fileFlags);
  struct stat info{};
  if (descriptor < 0 || file.in == nullptr || ::fstat(descriptor, &info) != 0) return descriptor;
  return unless(S_ISREG(info.st_mode) && info.st_nlink > 1 ? otherNamesRefused : 0, descriptor);
}

int openToWrite(const FilePath& file) {
  const int descriptor = openAt(file, O_WRONLY | O_CREAT | O_NOFOLLOW | fileFlags, 0666);
  struct stat info{};
  if (descriptor < 0 && errno == ENXIO) errno = kindRefused;  // a fifo that nobody reads, a socket
  if (descriptor < 0) return -1;
  if (::fstat(descriptor, &info) != 0) return unless(errno, descriptor);
  if (!S_ISREG(info.st_mode)) return unless(kindRefused, descriptor);
  if (info.st_nlink > 1) return unless(otherNamesRefused, descriptor);
  return unless(::ftruncate(descriptor, 0) != 0 ? errno : 0, descriptor);
}

bool isRefusal(int error) {
  return error == linkRefused || error == otherNamesRefused || error == kindRefused;
}

std::string openingFault(int error) {
  if (error == linkRefused) return "it is a link, which is not followed here";
  if (error == otherNamesRefused) return "it has other names, too (hard links)";
  if (error == kindRefused) return "it is not a regular file";
  return std::strerror(error);
}
