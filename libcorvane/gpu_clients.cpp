#include "gpu_clients.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

#include "notice.h"
#include "text_scan.h"

namespace {

/// Looking through the descriptors of all processes takes milliseconds, so it is done seldom: a
/// client is counted this long after it has opened its device, at the latest.
constexpr auto searchInterval = std::chrono::seconds(5);

bool isDrmDevice(const std::string& link) {
  char target[16] = {};
  return ::readlink((kernelRoot() + link).c_str(), target, sizeof target) > 0 &&
         std::string_view(target, sizeof target).starts_with("/dev/dri/");
}

}  // namespace

void GpuClients::findDescriptorsOf(const std::string& process) {
  const std::string folder = "/proc/" + process;
  const std::string links = folder + "/fd/", texts = folder + "/fdinfo/";
  errno = 0;
  const auto descriptors = listFolder(links);
  if (descriptors.empty() && errno == EACCES) {
    noticeOnce("GPU utilization lacks the processes whose descriptors may not be read");
  }
  for (const auto& descriptor : descriptors) {
    if (isDrmDevice(links + descriptor)) descriptors_.push_back(texts + descriptor);
  }
}

void GpuClients::findDescriptors() {
  descriptors_.clear();
  errno = 0;
  if (listFolder("/sys/class/drm").empty() && errno == ENOENT) return;  // no such device
  for (const auto& entry : listFolder("/proc")) {
    if (toNumber<int>(entry)) findDescriptorsOf(entry);
  }
}

void GpuClients::read() {
  auto time = steadyNow();
  if (time - lastSearch_ >= searchInterval) {
    findDescriptors();
    lastSearch_ = time;
    time = steadyNow();
  }
  before_.swap(now_);
  now_.clear();
  for (const auto& path : descriptors_) {
    const Descriptor file = openKernelFile(path.c_str());
    if (const auto text = file ? text_.readOnce(file.get()) : std::nullopt) addClient(now_, *text);
  }
  if (time > lastReading_) load_ = engineLoad(before_, now_, time - lastReading_);
  lastReading_ = time;
}

std::optional<double> GpuClients::megahertz() const {
  double highest = 0;
  for (const auto& client : now_)
    highest = std::max(highest, client.megahertz);
  return highest > 0 ? std::optional(highest) : std::nullopt;
}

bool GpuClients::countEngineTime() const {
  return std::ranges::any_of(now_, [](const auto& client) { return client.engineCount > 0; });
}
