#include "clocks.h"

#include <time.h>

// The stamps of all files of a run stand on one axis.
#include "../../app/virtual_counter.h"

runs::Instant instantNow() {
  timespec wall{}, boot{};
  clock_gettime(CLOCK_REALTIME, &wall);
  clock_gettime(CLOCK_BOOTTIME, &boot);
  const auto counter = virtualCounter();
  tm local{};
  localtime_r(&wall.tv_sec, &local);
  return {.wallNs = std::int64_t(wall.tv_sec) * 1'000'000'000 + wall.tv_nsec,
          .zoneSeconds = int(local.tm_gmtoff),
          .boot = double(boot.tv_sec) + double(boot.tv_nsec) * 1e-9,
          .counter = counter};
}

double counterHz() {
  return double(virtualCounterRate());
}
