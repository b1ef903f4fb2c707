#include "progress.h"

#include <cstdio>
#include <unistd.h>

#include "printable.h"

ProgressLine::ProgressLine(const std::string& what)
    : what_(printable(what)),
      isTerminal_(::isatty(STDERR_FILENO) != 0),
      next_(Clock::now() + std::chrono::seconds(2)) {}

ProgressLine::~ProgressLine() {
  if (shown_) std::fputs("\r\033[K", stderr);
}

void ProgressLine::show(double part) {
  if (!isTerminal_ || Clock::now() < next_) return;
  next_ = Clock::now() + std::chrono::milliseconds(200);
  shown_ = true;
  std::fprintf(stderr, "\r\033[Kcorvane: %s, %.0f %%", what_.c_str(), part * 100);
}
