#include "standard_output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "message.h"

bool putOut(std::string_view text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  if (written && std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
  message(std::string("standard output cannot be written: ") + std::strerror(errno));
  return false;
}
