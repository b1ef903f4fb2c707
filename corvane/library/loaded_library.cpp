// Members of the monitor classes that pass the call on to the library that is loaded at run time,
// so that this program starts without one and asks the one that the profiler will use. The names
// hold no type of a standard library, so that a library built with another one is asked, too.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <sys/auxv.h>
#include <unistd.h>

#include "cpu_mon.h"
#include "ddr_mon.h"
#include "disk_mon.h"
#include "dsp_mon.h"
#include "gpu_mon.h"
#include "memory_mon.h"
#include "monitor_library.h"
#include "net_mon.h"
#include "perprocmem_mon.h"
#include "process_mon.h"
#include "version.h"
#include "words.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* libraryName = "libcorvane.so";

void* library = nullptr;

[[noreturn]] void giveUp(const std::string& reason) {
  const std::string line = "corvane: " + reason + "\n";
  [[maybe_unused]] const auto written = ::write(STDERR_FILENO, line.data(), line.size());
  ::_exit(1);
}

/// The library in the first folder of LD_LIBRARY_PATH that has one. The loader itself ignores the
/// variable in a program that has more rights than its caller.
fs::path ofEnvironment() {
  const char* const value = ::getauxval(AT_SECURE) == 0 ? std::getenv("LD_LIBRARY_PATH") : nullptr;
  if (value == nullptr) return {};
  for (const auto& folder : split(value, ":;")) {
    const auto path = fs::path(folder.empty() ? "." : folder) / libraryName;
    std::error_code error;
    if (fs::exists(path, error)) return fs::absolute(path, error);
  }
  return {};
}

/// Calls a member of the library's by its name in the object file: by a pointer to a member, as
/// both C++ ABIs in use lay it out, so that object and result are handed over as for any member.
template <class Result = void, class Class, class... Arguments>
Result call(const char* name, Class* object, Arguments... arguments) {
  const struct {
    void* address;
    std::ptrdiff_t adjustment;
  } layout{::dlsym(library, name), 0};
  if (layout.address == nullptr) giveUp(std::string("the monitor library has no ") + name);
  Result (Class::*member)(Arguments...) = nullptr;
  static_assert(sizeof member == sizeof layout);
  std::memcpy(&member, &layout, sizeof member);
  return (object->*member)(arguments...);
}

}  // namespace

std::string useMonitorLibrary(const fs::path& profilerFolder) {
  std::error_code error;
  auto path = ofEnvironment();
  if (path.empty() && fs::exists(profilerFolder / libraryName, error))
    path = profilerFolder / libraryName;
  if (path.empty()) path = libraryName;
  library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) giveUp(std::string("no monitor library: ") + ::dlerror());
  Dl_info info{};
  void* const symbol = ::dlsym(library, "_Z19printLibraryVersionv");
  if (symbol != nullptr && ::dladdr(symbol, &info) != 0) path = info.dli_fname;
  return path;
}

void printLibraryVersion() {
  void* const symbol = ::dlsym(library, "_Z19printLibraryVersionv");
  if (symbol == nullptr) giveUp("the monitor library does not name itself");
  reinterpret_cast<void (*)()>(symbol)();
}

namespace cpu {
CPU_MON::CPU_MON() {
  call("_ZN3cpu7CPU_MONC1Ev", this);
}
}  // namespace cpu

namespace gpu {
GPU_MON::GPU_MON() {
  call("_ZN3gpu7GPU_MONC1Ev", this);
}
int GPU_MON::corvane_getGPUSample() {
  return call<int>("_ZN3gpu7GPU_MON20corvane_getGPUSampleEv", this);
}
}  // namespace gpu

namespace dsp {
DSP_MON::DSP_MON(int slot, int (*wait)(int)) {
  call("_ZN3dsp7DSP_MONC1EiPFiiE", this, slot, wait);
}
int DSP_MON::corvane_getDSPSample() {
  return call<int>("_ZN3dsp7DSP_MON20corvane_getDSPSampleEv", this);
}
}  // namespace dsp

namespace ddr {
DDR_MON::DDR_MON() {
  call("_ZN3ddr7DDR_MONC1Ev", this);
}
void DDR_MON::corvane_setSamplingTime(int milliseconds) {
  call("_ZN3ddr7DDR_MON23corvane_setSamplingTimeEi", this, milliseconds);
}
std::int64_t* DDR_MON::corvane_getDDRStats() {
  return call<std::int64_t*>("_ZN3ddr7DDR_MON19corvane_getDDRStatsEv", this);
}
}  // namespace ddr

namespace memory {
MEMORY_MON::MEMORY_MON() {
  call("_ZN6memory10MEMORY_MONC1Ev", this);
}
std::uint64_t* MEMORY_MON::corvane_getMemStats() {
  return call<std::uint64_t*>("_ZN6memory10MEMORY_MON19corvane_getMemStatsEv", this);
}
}  // namespace memory

namespace process {
PROCESS_MON::PROCESS_MON(int (*wait)(int)) {
  call("_ZN7process11PROCESS_MONC1EPFiiE", this, wait);
}
void PROCESS_MON::corvane_setSamplingTime(int milliseconds) {
  call("_ZN7process11PROCESS_MON23corvane_setSamplingTimeEi", this, milliseconds);
}
std::vector<procStats> PROCESS_MON::corvane_getProcessStats() {
  return call<std::vector<procStats>>("_ZN7process11PROCESS_MON23corvane_getProcessStatsEv", this);
}
}  // namespace process

namespace diskio {
DISK_MON::DISK_MON(int (*wait)(int)) {
  call("_ZN6diskio8DISK_MONC1EPFiiE", this, wait);
}
void DISK_MON::corvane_setSamplingTime(int milliseconds) {
  call("_ZN6diskio8DISK_MON23corvane_setSamplingTimeEi", this, milliseconds);
}
std::vector<diskStats>* DISK_MON::corvane_getIOStats() {
  return call<std::vector<diskStats>*>("_ZN6diskio8DISK_MON18corvane_getIOStatsEv", this);
}
int DISK_MON::corvane_getNumOfIOStats() {
  return call<int>("_ZN6diskio8DISK_MON23corvane_getNumOfIOStatsEv", this);
}
}  // namespace diskio

namespace procmem {
PERPROCMEM_MON::PERPROCMEM_MON() {
  call("_ZN7procmem14PERPROCMEM_MONC1Ev", this);
}
std::vector<procMemStats> PERPROCMEM_MON::corvane_getPerProcessMemStats() {
  return call<std::vector<procMemStats>>(
      "_ZN7procmem14PERPROCMEM_MON29corvane_getPerProcessMemStatsEv", this);
}
}  // namespace procmem

namespace net {
NET_MON::NET_MON() {
  call("_ZN3net7NET_MONC1Ev", this);
}
void NET_MON::corvane_setSamplingTime(int milliseconds) {
  call("_ZN3net7NET_MON23corvane_setSamplingTimeEi", this, milliseconds);
}
std::vector<netStats> NET_MON::corvane_getNetstats() {
  return call<std::vector<netStats>>("_ZN3net7NET_MON19corvane_getNetstatsEv", this);
}
}  // namespace net
