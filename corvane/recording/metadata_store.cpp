#include "metadata_store.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "clocks.h"
#include "message.h"
#include "refusal.h"
#include "run_place.h"

namespace {

const std::string ending = ".run.json";

/// Only one process at a time changes metadata in a folder.
class Turn {
 public:
  explicit Turn(int folder) : fd_(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    while (::flock(fd_.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
  }

 private:
  Handle fd_;
};

std::optional<runs::Metadata> read(int base, const std::string& suffix) {
  const Handle file(
      ::openat(base, (suffix + ending).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  std::string text;
  std::array<char, 4096> piece{};
  ssize_t got = 0;
  while (file && (got = ::read(file.get(), piece.data(), piece.size())) > 0)
    text.append(piece.data(), std::size_t(got));
  return runs::parseMetadata(text);
}

bool writeAll(int fd, std::string_view text) {
  while (!text.empty()) {
    const auto count = ::write(fd, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(std::size_t(count));
  }
  return true;
}

bool write(int base, const std::string& suffix, const std::string& text) {
  const auto temporary = "." + suffix + ending + "." + std::to_string(::getpid());
  const Handle file(::openat(base, temporary.c_str(),
                             O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (file && writeAll(file.get(), text) &&
      ::renameat(base, temporary.c_str(), base, (suffix + ending).c_str()) == 0)
    return true;
  message(suffix + ending + " cannot be written: " + std::strerror(errno));
  if (file) ::unlinkat(base, temporary.c_str(), 0);
  return false;
}

/// Whether the process that records a run still holds its console.
bool isRecorded(int base, const std::string& suffix) {
  const Handle log(
      ::openat(base, (suffix + ".log").c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  return log && ::flock(log.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

/// The run that is being recorded and began last; empty where there is none.
std::string recordedRun(int base) {
  std::string newest;
  std::int64_t start = 0;
  for (const auto& name : namesIn(base)) {
    if (name.starts_with('.') || !name.ends_with(ending)) continue;
    const auto suffix = name.substr(0, name.size() - ending.size());
    const auto metadata = isRecorded(base, suffix) ? read(base, suffix) : std::nullopt;
    if (!metadata || (!newest.empty() && metadata->start.wallNs <= start)) continue;
    newest = suffix;
    start = metadata->start.wallNs;
  }
  return newest;
}

}  // namespace

bool changeMetadata(int base, const std::string& suffix,
                    const std::function<void(std::optional<runs::Metadata>&)>& change) {
  const Turn turn(base);
  auto metadata = read(base, suffix);
  change(metadata);
  return !metadata || write(base, suffix, runs::toJson(*metadata));
}

int markRecording(const std::string& output, const std::optional<std::string>& name,
                  const std::string& text) {
  const runs::Mark mark{.at = instantNow(), .text = text};
  const Handle folder(::open(output.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const auto base = openFolder(folder.get(), "Results_corvane");
  const auto suffix = !base                                   ? ""
                      : name && isRecorded(base.get(), *name) ? *name
                      : name                                  ? ""
                                                              : recordedRun(base.get());
  if (suffix.empty()) {
    throw Refusal("nothing is being recorded in " + output + (name ? " as " + *name : ""));
  }
  double seconds = 0;
  const bool done = changeMetadata(base.get(), suffix, [&](auto& metadata) {
    if (!metadata) return;
    metadata->marks.push_back(mark);
    seconds = mark.at.boot - metadata->start.boot;
  });
  if (!done) return Status::wrongUse;
  std::array<char, 32> when{};
  std::snprintf(when.data(), when.size(), "%.3f", seconds);
  message("marked " + suffix + " at " + when.data() + " s");
  return Status::done;
}
