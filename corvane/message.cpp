#include "message.h"

#include <string>
#include <unistd.h>

void message(std::string_view text) {
  std::string line = "corvane: " + std::string(text);
  for (auto& c : line) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  }
  line += '\n';
  // Nobody is left to tell when standard error itself cannot be written.
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}
