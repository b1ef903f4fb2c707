#include "message.h"

#include <string>
#include <unistd.h>

#include "printable.h"

void message(std::string_view text) {
  const auto line = "corvane: " + printable(text) + "\n";
  // Nobody is left to tell when standard error itself cannot be written.
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
}
