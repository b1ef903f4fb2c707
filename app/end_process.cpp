#include "end_process.h"

#include <atomic>
#include <cstdlib>
#include <unistd.h>

#include "run_signals.h"

void endProcess(int status) {
  static std::atomic<bool> ending{false};
  if (!ending.exchange(true)) {
    waitForReader();
    std::exit(status);
  }
  for (;;)
    ::pause();
}
