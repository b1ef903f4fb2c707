#include "gauge_file.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

// The stamps of all files of a run stand on one axis.
#include "../../app/virtual_counter.h"
#include "message.h"
#include "steady_time.h"

namespace {

constexpr std::size_t leastWidth = 20;

/// Wide enough that the name does not touch its neighbour.
std::size_t widthOf(std::string_view column) {
  return std::max(leastWidth, column.size() + 1);
}

}  // namespace

GaugeFile::GaugeFile(std::unique_ptr<Gauge> gauge, int folder, const std::string& name,
                     std::chrono::milliseconds period, Time now)
    : gauge_(std::move(gauge)),
      name_(name),
      period_(period),
      due_(now + period),
      fd_(::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                   0666)),
      values_(gauge_->columns().size()) {
  if (fd_ < 0) giveUp(std::string(": ") + std::strerror(errno));
  line_.append(leastWidth - 10, ' ').append("Time(usec)");
  for (std::size_t i = 0; i < values_.size(); ++i)
    addField(gauge_->columns()[i], i);
  write();
}

GaugeFile::~GaugeFile() {
  if (fd_ >= 0) ::close(fd_);
}

void GaugeFile::giveUp(const std::string& reason) {
  fault_ = name_ + reason;
  message(fault_);
}

void GaugeFile::addField(std::string_view text, std::size_t column) {
  const auto width = widthOf(gauge_->columns()[column]);
  line_.append(width > text.size() ? width - text.size() : 0, ' ').append(text);
}

void GaugeFile::sample() {
  const auto late = steadyNow() - due_;
  due_ += period_ * (1 + std::max<std::int64_t>(0, late / period_));
  gauge_->sample(values_);
  std::array<char, 400> digits{};  // the largest double has 309 digits before the point
  const auto fixed = [&](double value, int decimals) {
    const auto format = std::chars_format::fixed;
    const auto end = std::to_chars(digits.begin(), digits.end(), value, format, decimals).ptr;
    return std::string_view(digits.data(), std::size_t(end - digits.data()));
  };
  const auto time = fixed(virtualCounterMicroseconds(), 2);
  line_.append(leastWidth > time.size() ? leastWidth - time.size() : 0, ' ').append(time);
  for (std::size_t i = 0; i < values_.size(); ++i)
    addField(std::isnan(values_[i]) ? "nan" : fixed(values_[i], 3), i);
  write();
}

void GaugeFile::write() {
  line_ += '\n';
  std::string_view left = line_;
  while (fd_ >= 0 && !left.empty()) {
    const auto count = ::write(fd_, left.data(), left.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      giveUp(std::string(": ") + std::strerror(count < 0 ? errno : EIO) +
             "; it keeps what was written and takes no more");
      [[maybe_unused]] const int cut = ::ftruncate(fd_, off_t(written_));
      ::close(fd_);
      fd_ = -1;
    } else {
      left.remove_prefix(std::size_t(count));
    }
  }
  written_ += line_.size();
  line_.clear();
}
