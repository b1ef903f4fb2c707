#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The folder that stands for "/" in every path of this library. Only tests set it, to read trees
/// of machines that are not at hand.
const std::string& kernelRoot();
void setKernelRoot(std::string root);
bool onRealKernel();

/// A descriptor with its owner. Opened read-only and closed on exec.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int fd) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }

 private:
  int fd_ = -1;
};

/// Opens `path`, which begins with "/proc" or "/sys"; -1 and errno where that fails.
Descriptor openKernelFile(const char* path, int flags = 0);

/// Bytes of one kernel file; grows to the largest file it has held and is reused from then on.
class ReadBuffer {
 public:
  /// The whole file from its start (the kernel hands out iterated files in pieces of about a
  /// page). Nothing and errno where a read fails. Valid until the next read into this buffer.
  std::optional<std::string_view> readAll(int fd);
  /// The same for a file that the kernel composes at once: a short read is the end, which saves
  /// the read that finds nothing more.
  std::optional<std::string_view> readOnce(int fd);

 private:
  std::optional<std::string_view> readFromStart(int fd, bool shortReadIsEnd);

  std::string bytes_ = std::string(4096, '\0');
};

/// A kernel file that stays open and is read again and again.
class KernelFile {
 public:
  explicit KernelFile(const char* path) : file_(openKernelFile(path)) {}

  bool isOpen() const { return bool(file_); }
  /// The file as it is now; nothing and errno where it cannot be read.
  std::optional<std::string_view> read() { return buffer_.readAll(file_.get()); }
  std::optional<std::string_view> readOnce() { return buffer_.readOnce(file_.get()); }

 private:
  Descriptor file_;
  ReadBuffer buffer_;
};

/// One-value attributes of a device: the content without the blanks around it.
std::optional<std::string> readAttribute(const std::string& path);
std::optional<double> readNumber(const std::string& path);

/// Names of a folder's entries without "." and "..", sorted; empty where it cannot be read.
std::vector<std::string> listFolder(const std::string& path);

/// Where a path leads once its links are followed; nothing where it leads nowhere.
std::optional<std::string> resolvedPath(const std::string& path);
