#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>

/// A folder that is held open: what is opened in it lies in it, also when its path has come to mean
/// another folder meanwhile. Below it no link is followed.
class Folder {
 public:
  /// The folder at this path, links followed.
  // NOLINTNEXTLINE(google-explicit-constructor): a path is how callers know a folder
  Folder(std::string path);
  /// Takes `descriptor`, the open folder at this path, or -1 with errno saying why there is none:
  /// whatever is asked of it then fails for that reason. What lies above it is looked for in
  /// `above`, which must outlive it.
  Folder(std::string path, int descriptor, const Folder* above = nullptr);
  ~Folder();
  Folder(Folder&& other) noexcept;
  Folder& operator=(Folder&&) = delete;

  const std::string& path() const { return path_; }
  const Folder* above() const { return above_; }
  int descriptor() const { return descriptor_; }

  /// As openat and mkdirat, for a path that begins here.
  int open(const std::string& below, int flags, mode_t mode = 0) const;
  int openFolder(const std::string& below) const;
  int makeFolder(const std::string& below, mode_t mode) const;

 private:
  /// What `call` gives for the folder of the path's last name, and that name; -1 with errno where a
  /// name before it is no folder, or a link.
  template <class Call>
  int atLastName(std::string_view path, Call call) const;

  std::string path_;
  int descriptor_, error_ = 0;
  const Folder* above_ = nullptr;
};

/// As ::open for a folder; one that may not be listed can still be entered.
int openFolder(int where, const char* path, int flags = 0);

/// A file by its path, which is looked for in the held folder that it begins with, if in any.
struct FilePath {
  // NOLINTNEXTLINE(google-explicit-constructor): a path is how callers know a file
  FilePath(std::convertible_to<std::string> auto&& text)
      : path(std::forward<decltype(text)>(text)) {}
  FilePath(std::string text, const Folder* folder) : path(std::move(text)), in(folder) {}

  std::string path;
  const Folder* in = nullptr;  // null: links in the path are followed
};

/// A descriptor of the file, or -1 with errno. Whatever is there can be opened to be read, but in a
/// held folder it has only the one name. To be written it must be a file with only the one name,
/// which is made, or cut to nothing.
int openToRead(const FilePath& file);
int openToWrite(const FilePath& file);

/// What errno says of a file that could not be opened.
std::string openingFault(int error);
/// Whether it could have been, but for the care that is taken.
bool isRefusal(int error);
