// The least that sampling takes: bare_threads MILLISECONDS SECONDS FILE|-...
//
// One thread for each argument. With a file it does one read of the kept descriptor at each
// absolute deadline (one that was missed is skipped); with "-" it only waits, as the pacing wait
// does: until now + period on a condition variable. Prints how often each has woken up.

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <exception>
#include <fcntl.h>
#include <pthread.h>
#include <string_view>
#include <thread>
#include <time.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

timespec toTimespec(std::chrono::nanoseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  return {.tv_sec = time_t(seconds.count()), .tv_nsec = long((time - seconds).count())};
}

void waitUntil(Clock::time_point deadline) {
  const timespec until = toTimespec(deadline.time_since_epoch());
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) != 0) {
  }
}

long readAtDeadlines(const char* file, std::chrono::milliseconds period, Clock::time_point end) {
  const int fd = open(file, O_RDONLY | O_CLOEXEC);
  std::array<char, 16384> buffer;
  long count = 0;
  for (auto deadline = Clock::now() + period; deadline < end + period / 2; ++count) {
    waitUntil(deadline);
    if (pread(fd, buffer.data(), buffer.size(), 0) < 0) break;
    deadline += period * (1 + (Clock::now() - deadline) / period);
  }
  close(fd);
  return count;
}

long onlyWait(std::chrono::milliseconds period, Clock::time_point end) {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
  long count = 0;
  for (; Clock::now() < end; ++count) {
    const auto deadline = std::chrono::system_clock::now().time_since_epoch() + period;
    const timespec until = toTimespec(deadline);
    pthread_mutex_lock(&mutex);
    pthread_cond_timedwait(&condition, &mutex, &until);
    pthread_mutex_unlock(&mutex);
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 4) {
    std::fputs("usage: bare_threads MILLISECONDS SECONDS FILE|-...\n", stderr);
    return 2;
  }
  const std::chrono::milliseconds period(std::atoi(argv[1]));
  const auto end = Clock::now() + std::chrono::seconds(std::atoi(argv[2]));
  std::deque<long> counts;
  std::deque<std::thread> threads;
  for (int i = 3; i < argc; ++i) {
    const char* file = argv[i];
    threads.emplace_back([&count = counts.emplace_back(), file, period, end] {
      count = std::string_view(file) == "-" ? onlyWait(period, end)
                                            : readAtDeadlines(file, period, end);
    });
  }
  for (auto& thread : threads)
    thread.join();
  for (const long count : counts)
    std::printf("%ld\n", count);
} catch (const std::exception& error) {
  std::fprintf(stderr, "bare_threads: %s\n", error.what());
  return 1;
}
