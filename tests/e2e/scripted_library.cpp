// Another build of the monitor library: plays the values of a script ($CORVANE_SCRIPT) and records
// the calls ($CORVANE_CALLS). A script line is "SOURCE [repeat=N] [signal=N] [slow=MS] [step=S]
// [pass=US] [await=N] [print=N] VALUES..."; each is one sample, or N of them; step sets the wall
// clock that the program sees, await waits for the N-th sample of the cores, print is what a
// library writes on std::cout (N / 8). When a source's lines are played out it reports a stop where
// its interface can, and repeats the last line where it cannot.
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <dlfcn.h>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <pthread.h>
#include <signal.h>
#include <sstream>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include "cpu_mon.h"
#include "ddr_mon.h"
#include "disk_mon.h"
#include "dsp_mon.h"
#include "gpu_mon.h"
#include "memory_mon.h"
#include "net_mon.h"
#include "perprocmem_mon.h"
#include "process_mon.h"
#include "version.h"

namespace {

void record(const std::string& call) {
  const char* path = std::getenv("CORVANE_CALLS");
  if (path == nullptr) return;
  const int fd = ::open(path, O_WRONLY | O_CREAT | O_APPEND, 0666);
  const std::string line = call + "\n";
  if (::write(fd, line.data(), line.size()) < 0) std::abort();
  ::close(fd);
}

std::string joined(const std::vector<int>& numbers) {
  std::string text;
  for (const int number : numbers)
    text += " " + std::to_string(number);
  return text;
}

/// With $CORVANE_OWN_TIME every thread has a time of its own, in ns, that nothing but its waits
/// moves (and "pass"). It begins near the end of a second.
const bool hasOwnTime = std::getenv("CORVANE_OWN_TIME") != nullptr;
thread_local std::int64_t ownTime = 100'900'000'000;

/// How many samples of the cores have been asked for.
std::atomic<int> cpuSamples{0};

/// By how many seconds the wall clock that the program sees is ahead.
std::atomic<int> wallClockStep{0};

void sleepMilliseconds(int milliseconds) {
  const timespec time{.tv_sec = milliseconds / 1000, .tv_nsec = milliseconds % 1000 * 1'000'000L};
  if (milliseconds > 0) nanosleep(&time, nullptr);
}

void waitPeriod(int milliseconds) {
  ownTime += milliseconds * std::int64_t{1'000'000};
  if (!hasOwnTime) sleepMilliseconds(milliseconds);
}

/// Whether the main thread waits for something.
bool mainThreadSleeps() {
  const auto id = std::to_string(getpid());
  std::ifstream file("/proc/" + id + "/task/" + id + "/stat");
  std::string text;
  std::getline(file, text);
  return text.find(") S ") != std::string::npos;
}

/// Sends the signal and returns when the main thread has taken it: it may lose its processor
/// between that and the handler.
void sendSignal(int number) {
  kill(getpid(), number);
  sigset_t pending;
  do {
    sleepMilliseconds(2);
    sigpending(&pending);
  } while (sigismember(&pending, number) == 1);
  for (int patience = 2000; patience > 0 && !mainThreadSleeps(); --patience)
    sleepMilliseconds(1);
}

/// The lines of one source that are left to play.
struct Track {
  std::deque<std::pair<int, std::string>> lines;  ///< how often, and what
  std::string last;
};

std::map<std::string, Track> readScript() {
  std::map<std::string, Track> tracks;
  const char* path = std::getenv("CORVANE_SCRIPT");
  std::ifstream file(path != nullptr ? path : "");
  for (std::string source, values; file >> source && std::getline(file, values);) {
    int count = 1;
    std::sscanf(values.c_str(), " repeat=%d", &count);
    tracks[source].lines.emplace_back(count, values);
  }
  return tracks;
}

/// The next sample of a source; false when its lines are played out.
bool next(const std::string& source, std::istringstream& values) {
  static std::mutex mutex;
  static auto& tracks = *new auto(readScript());
  std::unique_lock lock(mutex);
  auto& track = tracks[source];
  const bool fresh = !track.lines.empty();
  if (fresh) {
    auto& [count, line] = track.lines.front();
    track.last = line;
    if (--count == 0) track.lines.pop_front();
  }
  values = std::istringstream(track.last);
  lock.unlock();
  cpuSamples += source == "cpu" ? 1 : 0;
  std::string word;
  auto start = values.tellg();
  for (; values >> word && word.find('=') != word.npos; start = values.tellg()) {
    const int number = std::atoi(word.c_str() + word.find('=') + 1);
    if (fresh && word.starts_with("signal")) sendSignal(number);
    if (fresh && word.starts_with("step")) wallClockStep += number;
    if (word.starts_with("print")) std::cout << number / 8.0 << std::endl;
    while (word.starts_with("await") && cpuSamples < number)
      sleepMilliseconds(1);
    if (word.starts_with("pass")) ownTime += number * std::int64_t{1000};
    if (word.starts_with("slow")) sleepMilliseconds(number);
  }
  values.clear();
  values.seekg(start);
  return fresh;
}

/// Reads the numbers of a source's next sample over those of the last one.
template <class Number, std::size_t size>
bool play(const std::string& source, Number (&numbers)[size]) {
  std::istringstream values;
  const bool fresh = next(source, values);
  for (std::size_t i = 0; i < size && values >> numbers[i];)
    ++i;
  return fresh;
}

constexpr int goOn = 110;

/// What the monitors keep in the storage that the program sets aside for them.
struct State {
  int slot = 0;
  int (*wait)(int) = nullptr;
  int period = 0;
  double load[128] = {};
  float floats[5] = {};
  std::int64_t bandwidths[6] = {};
  std::uint64_t kilobytes[6] = {};
  std::vector<diskio::diskStats>* disks = nullptr;
};
static_assert(sizeof(State) <= 4096);

State& in(unsigned char* opaque) { return *reinterpret_cast<State*>(opaque); }
State& make(unsigned char* opaque, const std::string& call) {
  record(call);
  record("timer slack " + call + " " + std::to_string(prctl(PR_GET_TIMERSLACK)));
  return *new (opaque) State;
}
float value(const char* getter, float number) {
  record(getter);
  return number;
}
void setPeriod(unsigned char* opaque, const std::string& monitor, int milliseconds) {
  record(monitor + "::corvane_setSamplingTime " + std::to_string(milliseconds));
  in(opaque).period = milliseconds;
}

}  // namespace

// In front of the C library's, since this library is; where all is one program, by the linker.
#ifdef LINKED_IN
#define IN_FRONT(function) __wrap_##function
extern "C" decltype(pthread_cond_timedwait) __real_pthread_cond_timedwait;
static const auto realTimedWait = &__real_pthread_cond_timedwait;
#else
#define IN_FRONT(function) function
static const auto realTimedWait =
    decltype(&pthread_cond_timedwait)(dlsym(RTLD_NEXT, "pthread_cond_timedwait"));
#endif
extern "C" int IN_FRONT(clock_gettime)(clockid_t clock, timespec* time) noexcept {
  const auto result = int(syscall(SYS_clock_gettime, clock, time));
  if (clock == CLOCK_REALTIME) {
    time->tv_sec += wallClockStep;
  } else if (hasOwnTime) {
    *time = {.tv_sec = ownTime / 1'000'000'000, .tv_nsec = ownTime % 1'000'000'000};
  }
  return result;
}
extern "C" int IN_FRONT(pthread_cond_timedwait)(pthread_cond_t* cond, pthread_mutex_t* mutex,
                                                const timespec* deadline) {
  if (!hasOwnTime) return realTimedWait(cond, mutex, deadline);
  if (deadline->tv_nsec < 0 || deadline->tv_nsec >= 1'000'000'000) return EINVAL;
  ownTime = std::max(ownTime, deadline->tv_sec * 1'000'000'000 + deadline->tv_nsec);
  return ETIMEDOUT;
}
/// What runs out with the own time is over soon.
extern "C" unsigned IN_FRONT(alarm)(unsigned seconds) noexcept {
  itimerval time{};
  time.it_value = {.tv_sec = hasOwnTime ? 0 : seconds, .tv_usec = hasOwnTime ? 200'000 : 0};
  setitimer(ITIMER_REAL, &time, nullptr);
  return 0;
}
extern "C" int IN_FRONT(gettimeofday)(timeval* time, void*) noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  *time = {.tv_sec = now.tv_sec, .tv_usec = now.tv_nsec / 1000};
  return 0;
}

void printLibraryVersion() { puts("Scripted Library Version : v0"); }

namespace cpu {
CPU_MON::CPU_MON() {
  make(opaque_, "CPU_MON");
  int cores[] = {2};
  play("cpu.cores", cores);
  coreCount = cores[0];
}
CPU_MON::~CPU_MON() { record("~CPU_MON"); }
void CPU_MON::corvane_setSamplingTime(int ms) { setPeriod(opaque_, "CPU_MON", ms); }
double* CPU_MON::corvane_getPerCoreUsage() {
  record("corvane_getPerCoreUsage");
  auto& state = in(opaque_);
  waitPeriod(state.period);
  if (!play("cpu", state.load)) state.load[0] = -1;
  return state.load;
}
double* CPU_MON::corvane_getPerCoreStealTime() {
  record("corvane_getPerCoreStealTime");
  return in(opaque_).load + coreCount + 1;
}
}  // namespace cpu

namespace gpu {
GPU_MON::GPU_MON() { make(opaque_, "GPU_MON"); }
GPU_MON::~GPU_MON() { record("~GPU_MON"); }
std::vector<std::string> GPU_MON::corvane_getGPUHeaders() {
  record("corvane_getGPUHeaders");
  return {"  GPU  Freq (MHz)", "Util(%)", "Bus Busy", "rd bw", "wr"};
}
int GPU_MON::corvane_getGPUSample() {
  record("corvane_getGPUSample");
  return play("gpu", in(opaque_).floats) ? 0 : -1;
}
float GPU_MON::corvane_getGPUFrequency() {
  return value("corvane_getGPUFrequency", in(opaque_).floats[0]);
}
float GPU_MON::corvane_getGPUUtilization() {
  return value("corvane_getGPUUtilization", in(opaque_).floats[1]);
}
float GPU_MON::corvane_gpuBusBusy() { return value("corvane_gpuBusBusy", in(opaque_).floats[2]); }
float GPU_MON::corvane_getReadBandwidth() {
  return value("corvane_getReadBandwidth", in(opaque_).floats[3]);
}
float GPU_MON::corvane_getWriteBandwidth() {
  return value("corvane_getWriteBandwidth", in(opaque_).floats[4]);
}
}  // namespace gpu

namespace dsp {
DSP_MON::DSP_MON(int slot, int (*wait)(int)) {
  auto& state = make(opaque_, "DSP_MON " + std::to_string(slot));
  state.slot = slot;
  state.wait = wait;
}
DSP_MON::~DSP_MON() { record("~DSP_MON"); }
int DSP_MON::corvane_getDSPSample() {
  record("corvane_getDSPSample");
  auto& state = in(opaque_);
  if (state.wait(state.slot) != goOn) return -1;
  return play("dsp" + std::to_string(state.slot), state.floats) ? 0 : 1;
}
long DSP_MON::corvane_getDSPFrequency() {
  return long(value("corvane_getDSPFrequency", in(opaque_).floats[0]));
}
float DSP_MON::corvane_getDSPUtilization() {
  return value("corvane_getDSPUtilization", in(opaque_).floats[1]);
}
}  // namespace dsp

namespace ddr {
DDR_MON::DDR_MON() { make(opaque_, "DDR_MON"); }
DDR_MON::~DDR_MON() { record("~DDR_MON"); }
void DDR_MON::corvane_setSamplingTime(int ms) { setPeriod(opaque_, "DDR_MON", ms); }
std::int64_t* DDR_MON::corvane_getDDRStats() {
  record("corvane_getDDRStats");
  play("ddr", in(opaque_).bandwidths);
  return in(opaque_).bandwidths;
}
}  // namespace ddr

namespace memory {
MEMORY_MON::MEMORY_MON() { make(opaque_, "MEMORY_MON"); }
MEMORY_MON::~MEMORY_MON() { record("~MEMORY_MON"); }
std::uint64_t* MEMORY_MON::corvane_getMemStats() {
  record("corvane_getMemStats");
  play("mem", in(opaque_).kilobytes);
  return in(opaque_).kilobytes;
}
}  // namespace memory

namespace process {
PROCESS_MON::PROCESS_MON(int (*wait)(int), std::vector<int> pids) {
  make(opaque_, "PROCESS_MON" + joined(pids)).wait = wait;
}
PROCESS_MON::PROCESS_MON(int (*wait)(int)) { make(opaque_, "PROCESS_MON").wait = wait; }
PROCESS_MON::~PROCESS_MON() { record("~PROCESS_MON"); }
void PROCESS_MON::corvane_setSamplingTime(int ms) { setPeriod(opaque_, "PROCESS_MON", ms); }
std::vector<procStats> PROCESS_MON::corvane_getProcessStats(std::vector<int> pids) {
  record("corvane_getProcessStats" + joined(pids));
  return corvane_getProcessStats();
}
std::vector<procStats> PROCESS_MON::corvane_getProcessStats() {
  std::vector<procStats> processes;
  std::istringstream values;
  if (in(opaque_).wait(7) != goOn || !next("proc", values)) return processes;
  std::string name;
  for (procStats p{}; values >> p.pid && std::getline(values.ignore(), name, '|') &&
                      values >> p.userTime >> p.systemTime >> p.totalTime >> p.usage;) {
    std::strncpy(p.name, name.c_str(), sizeof p.name - 1);
    processes.push_back(p);
  }
  return processes;
}
}  // namespace process

namespace diskio {
DISK_MON::DISK_MON(int (*wait)(int)) {
  auto& state = make(opaque_, "DISK_MON");
  state.wait = wait;
  state.disks = new std::vector<diskStats>;
}
DISK_MON::~DISK_MON() { record("~DISK_MON"); }
void DISK_MON::corvane_setSamplingTime(int ms) { setPeriod(opaque_, "DISK_MON", ms); }
std::vector<diskStats>* DISK_MON::corvane_getIOStats() {
  record("corvane_getIOStats");
  auto& disks = *in(opaque_).disks;
  disks.clear();
  std::istringstream values;
  if (in(opaque_).wait(8) != goOn || !next("disk", values)) return &disks;
  std::string name;
  for (diskStats d{}; values >> name >> d.sectorsRead >> d.sectorsWritten;) {
    std::strncpy(d.name, name.c_str(), sizeof d.name - 1);
    disks.push_back(d);
  }
  return &disks;
}
int DISK_MON::corvane_getNumOfIOStats() {
  record("corvane_getNumOfIOStats");
  int tooMany[] = {0};
  play("disk.toomany", tooMany);
  return int(in(opaque_).disks->size()) + tooMany[0];
}
}  // namespace diskio

namespace procmem {
PERPROCMEM_MON::PERPROCMEM_MON() { make(opaque_, "PERPROCMEM_MON"); }
PERPROCMEM_MON::~PERPROCMEM_MON() { record("~PERPROCMEM_MON"); }
std::vector<procMemStats> PERPROCMEM_MON::corvane_getPerProcessMemStats(std::vector<int> pids) {
  record("corvane_getPerProcessMemStats" + joined(pids));
  return corvane_getPerProcessMemStats();
}
std::vector<procMemStats> PERPROCMEM_MON::corvane_getPerProcessMemStats() {
  std::vector<procMemStats> processes;
  std::istringstream values;
  if (!next("procmem", values)) return processes;
  for (procMemStats p{}; values >> p.pid >> p.parentPid &&
                         std::getline(values.ignore(), p.name, '|') &&
                         values >> p.vss >> p.pss >> p.rss >> p.uss;) {
    processes.push_back(p);
  }
  return processes;
}
}  // namespace procmem

namespace net {
NET_MON::NET_MON() { make(opaque_, "NET_MON"); }
NET_MON::~NET_MON() { record("~NET_MON"); }
void NET_MON::corvane_setSamplingTime(int ms) { setPeriod(opaque_, "NET_MON", ms); }
std::vector<netStats> NET_MON::corvane_getNetstats() {
  record("corvane_getNetstats");
  waitPeriod(in(opaque_).period);
  std::vector<netStats> interfaces;
  std::istringstream values;
  next("net", values);
  for (netStats n{}; values >> n.name >> n.collisions >> n.txBytes >> n.rxBytes >> n.txPackets >>
                     n.rxPackets >> n.txDropped >> n.rxDropped;) {
    interfaces.push_back(n);
  }
  return interfaces;
}
}  // namespace net
