#include "console.h"

#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>

void say(std::string_view message) {
  // The C stream, which std::cout shares: a formatted insertion would reset the width that all
  // threads share.
  std::fwrite(message.data(), 1, message.size(), stdout);
  std::fflush(stdout);
}

void warn(std::string_view text) {
  const std::string line = "corvane: " + std::string(text) + "\n";
  // Nobody is left to tell when standard error itself cannot be written.
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}

void prepareConsole() {
  int fd = 0;
  do {
    fd = ::open("/dev/null", O_RDWR);
    if (fd < 0) fd = ::open("/", O_RDONLY | O_DIRECTORY);  // takes nothing, either
  } while (fd >= 0 && fd <= STDERR_FILENO);
  if (fd >= 0) ::close(fd);
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}
