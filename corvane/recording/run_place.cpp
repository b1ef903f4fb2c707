#include "run_place.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>
#include <utility>

#include "refusal.h"

namespace fs = std::filesystem;

namespace {

const std::string baseName = "Results_corvane";

std::string startTime() {
  const time_t now = time(nullptr);
  tm local{};
  localtime_r(&now, &local);
  std::array<char, 32> text{};
  return {text.data(), strftime(text.data(), text.size(), "%Y-%m-%d-%H_%M_%S", &local)};
}

bool exists(int folder, const std::string& name) {
  struct stat info{};
  return ::fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

}  // namespace

Handle::Handle(Handle&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

Handle& Handle::operator=(Handle&& other) noexcept {
  std::swap(fd_, other.fd_);
  return *this;
}

Handle::~Handle() {
  if (fd_ >= 0) ::close(fd_);
}

Handle openFolder(int parent, const std::string& name) {
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  Handle folder(::openat(parent, name.c_str(), flags | O_NOFOLLOW));
  struct stat link{};
  if (!folder && ::fstatat(parent, name.c_str(), &link, AT_SYMLINK_NOFOLLOW) == 0 &&
      S_ISLNK(link.st_mode) && (link.st_uid == 0 || link.st_uid == ::geteuid())) {
    return Handle(::openat(parent, name.c_str(), flags));
  }
  return folder;
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

RunPlace::RunPlace(const fs::path& output, const std::optional<std::string>& name)
    : outputPath_(output), output_(::open(output.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  const auto refuse = [&](const fs::path& path) {
    return Refusal(path.string() + ": " + std::strerror(errno));
  };
  if (!output_) throw refuse(output);
  base_ = openFolder(output_.get(), baseName);
  if (!base_) {
    const int error = errno;
    std::error_code none;
    const auto path = output / baseName;
    if (fs::is_symlink(path, none)) {
      throw Refusal(path.string() + (fs::exists(path, none)
                                         ? ": a link of somebody else, which is not followed"
                                         : ": a link to what is not there"));
    }
    errno = error;
    if (error != ENOENT) throw refuse(path);
  }
  if (name) {
    if (!take(*name)) {
      throw Refusal("there is a run of the name " + *name + " in " + (output / baseName).string() +
                    "; choose another --name");
    }
    return;
  }
  const auto time = startTime();
  auto suffix = time;
  for (int number = 2; !take(suffix); ++number)
    suffix = time + "-" + std::to_string(number);
}

/// Takes the suffix by making its console, which nobody else can make, too.
bool RunPlace::take(const std::string& suffix) {
  suffix_ = suffix;
  if (base_ && (exists(base(), suffix) || exists(base(), suffix + ".run.json"))) return false;
  constexpr int flags = O_RDWR | O_CREAT | O_EXCL | O_APPEND | O_NOFOLLOW | O_CLOEXEC;
  log_ = Handle(::openat(logPlace(), logName().c_str(), flags, 0666));
  if (!log_ && errno == EEXIST) return false;
  if (!log_) {
    throw Refusal(logFolder().string() + ": cannot be written: " + std::strerror(errno));
  }
  lock_ = Handle(::openat(logPlace(), logName().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (lock_) ::flock(lock_.get(), LOCK_EX | LOCK_NB);
  keepRoom();
  return true;
}

/// Room for the console and then the metadata, so that a disk that gets full is told of.
void RunPlace::keepRoom() {
  constexpr off_t room = 64 << 10;
  if (::fallocate(log_.get(), FALLOC_FL_KEEP_SIZE, 0, room) == 0 || errno != ENOSPC) return;
  const Refusal refusal(logFolder().string() + ": " + std::strerror(errno));
  ::unlinkat(logPlace(), logName().c_str(), 0);
  throw refusal;
}

void RunPlace::endLog() const {
  struct stat info{};
  if (::fstat(log_.get(), &info) == 0) [[maybe_unused]]
    const int cut = ::ftruncate(log_.get(), info.st_size);
}

RunPlace::~RunPlace() {
  if (!run_) ::unlinkat(logPlace(), logName().c_str(), 0);
}

std::string RunPlace::logName() const {
  return base_ ? suffix_ + ".log" : ".corvane-" + suffix_ + ".log";
}

int RunPlace::logPlace() const {
  return base_ ? base() : output();
}

fs::path RunPlace::logFolder() const {
  return base_ ? outputPath_ / baseName : outputPath_;
}

fs::path RunPlace::runFolder() const {
  return (outputPath_ / baseName / suffix_).lexically_normal();
}

fs::path RunPlace::logFile() const {
  return runFolder().string() + ".log";
}

bool RunPlace::settle() {
  if (!base_) {
    const auto before = logName();
    base_ = openFolder(output(), baseName);
    if (!base_) return false;
    if (exists(base(), logName()) ||
        ::renameat(output(), before.c_str(), base(), logName().c_str()) != 0)
      message(logFile().string() + ": the console cannot be put there; it is in " + before);
  }
  run_ = openFolder(base(), suffix_);
  return bool(run_);
}

std::string RunPlace::logText(std::size_t from) const {
  constexpr std::size_t most = 4 << 20;
  struct stat info{};
  if (::fstat(log_.get(), &info) != 0) return "";
  const auto size = std::size_t(info.st_size);
  if (size > from + most) from = size - most;
  std::string text(size > from ? size - from : 0, '\0');
  const auto got = ::pread(log_.get(), text.data(), text.size(), off_t(from));
  text.resize(got > 0 ? std::size_t(got) : 0);
  return text;
}
