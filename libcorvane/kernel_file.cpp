#include "kernel_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
namespace {

std::string& root() {
  // Never destroyed: a monitor may still be sampling while the process ends.
  static auto& path = *new std::string;
  return path;
}

}  // namespace

const std::string& kernelRoot() {
  return root();
}
void setKernelRoot(std::string path) {
  root() = std::move(path);
}
bool onRealKernel() {
  return root().empty();
}

Descriptor::Descriptor(Descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
  std::swap(fd_, other.fd_);
  return *this;
}

Descriptor::~Descriptor() {
  if (fd_ >= 0) ::close(fd_);
}

Descriptor openKernelFile(const char* path, int flags) {
  flags |= O_RDONLY | O_CLOEXEC;
  return Descriptor(onRealKernel() ? ::open(path, flags) : ::open((root() + path).c_str(), flags));
}

std::optional<std::string_view> ReadBuffer::readFromStart(int fd, bool shortReadIsEnd) {
  std::size_t size = 0;
  for (;;) {
    if (size == bytes_.size()) bytes_.resize(2 * bytes_.size());
    const ssize_t got = ::pread(fd, bytes_.data() + size, bytes_.size() - size, off_t(size));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return std::nullopt;
    size += std::size_t(got);
    if (got == 0 || (shortReadIsEnd && size < bytes_.size())) {
      return std::string_view(bytes_.data(), size);
    }
  }
}

std::optional<std::string_view> ReadBuffer::readAll(int fd) {
  return readFromStart(fd, false);
}

std::optional<std::string_view> ReadBuffer::readOnce(int fd) {
  return readFromStart(fd, true);
}

std::optional<std::string> readAttribute(const std::string& path) {
  const Descriptor file = openKernelFile(path.c_str());
  if (!file) return std::nullopt;
  ReadBuffer buffer;
  const auto text = buffer.readAll(file.get());
  if (!text) return std::nullopt;
  const auto first = text->find_first_not_of(" \t\n");
  if (first == std::string_view::npos) return std::string();
  return std::string(text->substr(first, text->find_last_not_of(" \t\n") + 1 - first));
}

std::optional<double> readNumber(const std::string& path) {
  const auto text = readAttribute(path);
  if (!text || text->empty()) return std::nullopt;
  char* end = nullptr;
  const double value = std::strtod(text->c_str(), &end);
  return *end == '\0' ? std::optional(value) : std::nullopt;
}

std::vector<std::string> listFolder(const std::string& path) {
  std::vector<std::string> names;
  DIR* folder = ::opendir((root() + path).c_str());
  if (folder == nullptr) return names;
  while (const dirent* entry = ::readdir(folder)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  ::closedir(folder);
  std::sort(names.begin(), names.end());
  return names;
}

std::optional<std::string> resolvedPath(const std::string& path) {
  char* const resolved = ::realpath((root() + path).c_str(), nullptr);
  if (resolved == nullptr) return std::nullopt;
  std::string target = resolved;
  std::free(resolved);
  return target;
}
