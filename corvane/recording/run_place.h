#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// A descriptor with its owner; closed on exec.
class Handle {
 public:
  Handle() = default;
  explicit Handle(int fd) : fd_(fd) {}
  Handle(Handle&& other) noexcept;
  Handle& operator=(Handle&& other) noexcept;
  ~Handle();

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

/// Opens a folder below `parent` without following a link to it, but for one that this user or root
/// has made. Empty, with errno, where that fails.
Handle openFolder(int parent, const std::string& name);

/// The names in a folder that is open.
std::vector<std::string> namesIn(int folder);

/// Where a run's results go: the run folder that the profiler makes and, beside it, the console
/// `<suffix>.log`. All below is reached by descriptors, so that nobody who may write beside it can
/// lead the recording elsewhere.
class RunPlace {
 public:
  /// Takes the name, or the start time as name, in the folder `output`. Throws a Refusal where
  /// nothing can be written there or a run of that name exists.
  RunPlace(const std::filesystem::path& output, const std::optional<std::string>& name);
  /// Removes the console of a profiler that has made no folder.
  ~RunPlace();
  RunPlace(const RunPlace&) = delete;
  RunPlace& operator=(const RunPlace&) = delete;

  const std::string& suffix() const { return suffix_; }
  std::filesystem::path runFolder() const;
  std::filesystem::path logFile() const;
  int output() const { return output_.get(); }
  int base() const { return base_.get(); }  ///< -1 before settle()
  int run() const { return run_.get(); }    ///< -1 before settle()
  int log() const { return log_.get(); }    ///< for the profiler's console; appends

  /// Once the profiler has made its folders: opens them and puts the console beside the run's.
  /// False where the run folder is not there.
  bool settle();
  /// The console takes no more: gives back the room that was kept for it.
  void endLog() const;
  /// The console from this byte on, at most a few megabytes of its end.
  std::string logText(std::size_t from = 0) const;

 private:
  bool take(const std::string& suffix);
  void keepRoom();
  // Where the console lies for now, before settle() perhaps beside the base folder to come.
  std::string logName() const;
  int logPlace() const;
  std::filesystem::path logFolder() const;

  std::filesystem::path outputPath_;
  std::string suffix_;
  Handle output_, base_, run_, log_;
  Handle lock_;  ///< held as long as the run is recorded
};
