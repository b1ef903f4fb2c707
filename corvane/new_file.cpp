#include "new_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <zlib.h>

#include "message.h"

namespace {

constexpr std::size_t bufferSize = 128UL << 10U;
constexpr std::array endingSignals{SIGINT, SIGTERM, SIGHUP, SIGPIPE};

// What the handler reads; its last byte is always 0.
std::array<char, PATH_MAX + 1> removedPath{};

extern "C" void removeAndEnd(int number) {
  ::unlink(removedPath.data());
  ::raise(number);  // the handler is gone: it ends the program as if there had been none
}

bool isOtherThanFile(const std::string& path) {
  struct stat info{};
  return ::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode);
}

}  // namespace

void removeOnSignal(std::string_view path) {
  sigset_t blocked, before;
  sigemptyset(&blocked);
  for (const int number : endingSignals)
    sigaddset(&blocked, number);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  removedPath.fill('\0');
  std::copy_n(path.begin(), std::min<std::size_t>(path.size(), PATH_MAX), removedPath.begin());
  for (const int number : endingSignals) {
    struct sigaction action{}, old{};
    action.sa_handler = path.empty() ? SIG_DFL : removeAndEnd;
    action.sa_flags = int(SA_RESETHAND);
    // What the caller has it ignore stays ignored, as under nohup.
    if (sigaction(number, nullptr, &old) == 0 && old.sa_handler != SIG_IGN)
      sigaction(number, &action, nullptr);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

struct NewFile::Compressor {
  z_stream stream{};
  std::vector<char> out = std::vector<char>(bufferSize);

  // 16 more than the window's size asks for gzip's frame. Level 3: a trace is nearly all
  // repetition.
  bool begin() {
    return deflateInit2(&stream, 3, Z_DEFLATED, 15 + 16, 9, Z_DEFAULT_STRATEGY) == Z_OK;
  }
  ~Compressor() { deflateEnd(&stream); }
};

NewFile::NewFile(std::string path) : path_(std::move(path)), buffer_(bufferSize) {
  const bool direct = isOtherThanFile(path_);
  if (!direct) {
    partPath_ = path_ + ".part" + std::to_string(::getpid());
    removeOnSignal(partPath_);
  }
  const int flags = O_WRONLY | O_CLOEXEC | (direct ? 0 : O_CREAT | O_EXCL);
  descriptor_ = ::open(direct ? path_.c_str() : partPath_.c_str(), flags, 0666);
  if (descriptor_ < 0) {
    partPath_.clear();
    fail("cannot be made");
  } else if (path_.ends_with(".gz")) {
    compressor_ = std::make_unique<Compressor>();
    if (!compressor_->begin()) fail("cannot be compressed");
  }
}

NewFile::~NewFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
  if (partPath_.empty()) return;
  ::unlink(partPath_.c_str());
  removeOnSignal("");
}

void NewFile::fail(const std::string& what) {
  if (!std::exchange(failed_, true)) message(path_ + " " + what + ": " + std::strerror(errno));
}

void NewFile::makeRoom(std::size_t count) {
  flush();
  if (buffer_.size() < count) buffer_.resize(count);
}

void NewFile::flush() {
  written_ += used_;
  const std::string_view text(buffer_.data(), std::exchange(used_, 0));
  if (compressor_ == nullptr || failed_) {
    write(text);
    return;
  }
  auto& stream = compressor_->stream;
  // zlib's interface is older than const.
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  stream.avail_in = uInt(text.size());
  while (stream.avail_in != 0) {
    stream.next_out = reinterpret_cast<Bytef*>(compressor_->out.data());
    stream.avail_out = uInt(bufferSize);
    deflate(&stream, Z_NO_FLUSH);
    write({compressor_->out.data(), bufferSize - stream.avail_out});
  }
}

void NewFile::finishCompression() {
  auto& stream = compressor_->stream;
  int status = Z_OK;
  while (status == Z_OK) {
    stream.next_out = reinterpret_cast<Bytef*>(compressor_->out.data());
    stream.avail_out = uInt(bufferSize);
    status = deflate(&stream, Z_FINISH);
    write({compressor_->out.data(), bufferSize - stream.avail_out});
  }
}

void NewFile::write(std::string_view bytes) {
  while (!bytes.empty() && !failed_) {
    const auto count = ::write(descriptor_, bytes.data(), bytes.size());
    if (count > 0) {
      bytes.remove_prefix(std::size_t(count));
    } else if (count == 0 || errno != EINTR) {
      fail("cannot be written");
    }
  }
}

bool NewFile::commit() {
  flush();
  if (compressor_ != nullptr && !failed_) finishCompression();
  if (descriptor_ >= 0 && ::close(std::exchange(descriptor_, -1)) != 0) fail("cannot be written");
  if (failed_ || partPath_.empty()) return !failed_;
  if (::rename(partPath_.c_str(), path_.c_str()) != 0) {
    fail("cannot be made");
    return false;
  }
  partPath_.clear();
  removeOnSignal("");
  return true;
}

void NewFile::restart() {
  used_ = 0;
  written_ = 0;
  if (compressor_ != nullptr) deflateReset(&compressor_->stream);
  if (failed_) return;
  if (::lseek(descriptor_, 0, SEEK_SET) != 0 || ::ftruncate(descriptor_, 0) != 0)
    fail("cannot be begun again");
}
