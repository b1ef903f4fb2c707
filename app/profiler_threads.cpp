#include "profiler_threads.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <sys/prctl.h>
#include <time.h>

#include "collectors/collectors.h"
#include "console.h"
#include "run_signals.h"

static_assert(ETIMEDOUT == 110, "the monitors' callback promises this number");

ProfilerThread profilerThreads[slotCount] = {
    {.name = "cpu", .threadFunc = startCPUProfiling},
    {.name = "gpu", .threadFunc = startGPUProfiling},
    {.name = "adsp", .threadFunc = startDSPProfiling},
    {.name = "cdsp", .threadFunc = startDSPProfiling},
    {.name = "cdsp1", .threadFunc = nullptr},
    {.name = "ddr", .threadFunc = startDDRProfiling},
    {.name = "mem", .threadFunc = startMEMProfiling},
    {.name = "proc", .threadFunc = startPROCProfiling},
    {.name = "disk", .threadFunc = startDISKProfiling},
    {.name = "procmem", .threadFunc = startPROCMEMProfiling},
    {.name = "net", .threadFunc = startNETProfiling},
    {.name = "", .threadFunc = nullptr},
};

namespace {

bool runs(const ProfilerThread& slot) {
  return slot.enabled != 0 && slot.threadFunc != nullptr;
}

/// A condition whose waits do not follow the wall clock when that is set.
int initMonotonic(pthread_cond_t& cond) {
  pthread_condattr_t attributes;
  int error = pthread_condattr_init(&attributes);
  if (error != 0) return error;
  error = pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  if (error == 0) error = pthread_cond_init(&cond, &attributes);
  pthread_condattr_destroy(&attributes);
  return error;
}

/// As a rule a sleeper may be woken 50 us late, to save wake-ups. Threads inherit what their maker
/// has, and only short periods need more than that.
void setTimerSlackFor(int period) {
  constexpr unsigned long exact = 1, usual = 0;
  ::prctl(PR_SET_TIMERSLACK, period < 100 ? exact : usual);
}

int start(ProfilerThread& slot) {
  int error = pthread_mutex_init(&slot.mutex, nullptr);
  if (error == 0) error = initMonotonic(slot.cond);
  setTimerSlackFor(slot.sampleTime);
  if (error == 0) error = pthread_create(&slot.thread, nullptr, slot.threadFunc, &slot);
  return error;
}

timespec after(timespec time, int milliseconds) {
  // A time in the past ends the wait at once; a negative one would make the deadline invalid.
  const int wait = std::max(milliseconds, 0);
  time.tv_sec += wait / 1000;
  time.tv_nsec += wait % 1000 * 1'000'000L;
  if (time.tv_nsec >= 1'000'000'000) {
    time.tv_sec += 1;
    time.tv_nsec -= 1'000'000'000;
  }
  return time;
}

}  // namespace

int startThreads() {
  for (auto& slot : profilerThreads) {
    if (!runs(slot)) continue;
    if (const int error = start(slot); error != 0) {
      warn(std::string(slot.name) + ": no thread could be started: " + std::strerror(error));
      return error;
    }
  }
  say("Started all threads\n");
  return 0;
}

void waitThreads() {
  say("waitThread enter\n");
  for (const auto& slot : profilerThreads) {
    if (!runs(slot)) continue;
    // A stop that comes after the timer is for the collectors that are left: each sees the flag
    // with its next sample.
    const SignalsLetIn open;
    pthread_join(slot.thread, nullptr);
  }
  say("waitThread exit\n");
}

void notifyThreadsExit() {
  for (auto& slot : profilerThreads) {
    if (!runs(slot)) continue;
    pthread_mutex_lock(&slot.mutex);
    if (const int error = pthread_cond_signal(&slot.cond); error != 0) {
      say("pthread_cond_signal failed! indx: " + std::to_string(&slot - profilerThreads) +
          ", ret = " + std::to_string(error) + "\n");
    }
    pthread_mutex_unlock(&slot.mutex);
  }
  say("notifyThreadsExit\n");
}

int cond_timedwait(int slotNumber) {
  if (slotNumber < 0 || slotNumber >= slotCount) return -1;
  auto& slot = profilerThreads[slotNumber];
  timespec now{};
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return -1;
  const timespec deadline = after(now, slot.sampleTime);
  int result = 0;
  pthread_mutex_lock(&slot.mutex);
  // The flag is looked at under the mutex that the notice takes, so no notice falls between the
  // look and the wait; a wake-up without it (some kernels' on a debugger's stop) is none.
  while (!stopRequested && result == 0) {
    result = pthread_cond_timedwait(&slot.cond, &slot.mutex, &deadline);
  }
  if (stopRequested) result = 0;
  pthread_mutex_unlock(&slot.mutex);
  return result;
}
