// What a command and all that it starts have used in the end: spent COMMAND [ARGUMENT...]
// Prints the processor time in us, user and system, and the peak memory in KB of the largest
// process; what the command itself prints is dropped. A program of its own because a process's peak
// begins with what its parent holds, which in an interpreter is more than most of what is measured.

#include <cstdio>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void run(char** command) {
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere >= 0 && ::dup2(nowhere, STDOUT_FILENO) >= 0) ::execvp(command[0], command);
  std::perror(command[0]);
  ::_exit(127);
}

long long microseconds(const timeval& time) {
  return time.tv_sec * 1'000'000LL + time.tv_usec;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);  // some end before what they have started
  const pid_t command = ::fork();
  if (command == 0) run(argv + 1);
  int result = -1, status = 0;
  for (pid_t ended = 0; (ended = ::wait(&status)) > 0;)
    if (ended == command) result = status;
  rusage usage{};
  ::getrusage(RUSAGE_CHILDREN, &usage);
  std::printf("%lld %ld\n", microseconds(usage.ru_utime) + microseconds(usage.ru_stime),
              usage.ru_maxrss);
  return WIFEXITED(result) ? WEXITSTATUS(result) : 1;
}
