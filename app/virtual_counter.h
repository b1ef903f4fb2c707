#pragma once

#include <cstdint>

#ifndef __aarch64__
#include <time.h>
#endif

/// The 19.2 MHz counter since boot: the processor's virtual counter on AArch64; elsewhere the boot
/// clock scaled to that rate stands in for it.
inline std::uint64_t virtualCounter() {
#ifdef __aarch64__
  std::uint64_t ticks = 0;
  asm volatile("isb\n\tmrs %0, cntvct_el0" : "=r"(ticks));
  return ticks;
#else
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return std::uint64_t(now.tv_sec) * 19'200'000 + std::uint64_t(now.tv_nsec) * 12 / 625;
#endif
}

/// Ticks per second that the processor says the counter has.
inline std::uint64_t virtualCounterRate() {
  std::uint64_t hertz = 19'200'000;
#ifdef __aarch64__
  asm("mrs %0, cntfrq_el0" : "=r"(hertz));
#endif
  return hertz;
}

/// The counter in microseconds.
inline double virtualCounterMicroseconds() {
  return double(virtualCounter()) / 19.2;
}
