#include "disk.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>

#include "counters.h"
#include "disk_mon.h"
#include "kernel_file.h"
#include "kernel_list.h"
#include "names.h"
#include "notice.h"
#include "opaque.h"
#include "steady_time.h"
#include "text_scan.h"

std::optional<DiskLine> parseDiskLine(std::string_view line) {
  const auto skip = [&line](int words) {
    while (words-- > 0)
      nextWord(line);
  };
  skip(2);  // major, minor
  const auto name = nextWord(line);
  skip(2);  // reads, reads merged
  const auto read = nextNumber(line);
  skip(3);  // time reading, writes, writes merged
  const auto written = nextNumber(line);
  if (!read || !written) return std::nullopt;
  return DiskLine{.name = name, .sectors = {.read = *read, .written = *written}};
}

DiskSectors diskTraffic(const DiskSectors& before, const DiskSectors& now) {
  return {.read = advance(before.read, now.read), .written = advance(before.written, now.written)};
}

namespace diskio {

namespace {

/// In the names of /sys, "!" stands for "/".
std::string sizePath(std::string_view name) {
  std::string folder(name);
  std::replace(folder.begin(), folder.end(), '/', '!');
  return "/sys/block/" + folder + "/size";
}

/// A line of the kernel's list: a whole device or a partition.
struct Disk {
  std::string name, shownName, sizeFile;
  bool isWhole = true;  ///< a partition is not listed in /sys/block, and never will be
  bool hasSize = false;
  bool isNew = true;  ///< there is no reading before this one
  DiskSectors sectors, traffic;

  explicit Disk(std::string_view lineName)
      : name(lineName),
        shownName(safeName(lineName, longestDeviceName)),
        sizeFile(sizePath(lineName)) {}
};

class Disks {
 public:
  bool read() {
    const auto text = diskstats_.read();
    if (!text) return false;
    const auto now = steadyNow();
    const bool lookAgain = now - lastLook_ >= lookInterval;
    if (lookAgain) lastLook_ = now;
    std::size_t count = 0;
    std::string_view rest = *text, line;
    while (nextLine(rest, line)) {
      const auto disk = parseDiskLine(line);
      if (!disk) continue;
      const bool isNew = settle(disks_, count, disk->name);
      update(disks_[count++], disk->sectors, isNew, lookAgain);
    }
    disks_.erase(disks_.begin() + std::ptrdiff_t(count), disks_.end());
    return true;
  }

  void publish(std::vector<diskStats>& records) const {
    records.clear();
    for (const auto& disk : disks_) {
      if (!disk.isWhole || !disk.hasSize || disk.isNew) continue;
      diskStats& record = records.emplace_back();
      std::memcpy(record.name, disk.shownName.c_str(), disk.shownName.size() + 1);
      record.sectorsRead = disk.traffic.read;
      record.sectorsWritten = disk.traffic.written;
    }
  }

 private:
  /// A size costs an open, and it hardly ever changes. A device that gets one is missed by this
  /// much at most, and not at all once something is read or written.
  static constexpr auto lookInterval = std::chrono::seconds(3);

  void update(Disk& disk, const DiskSectors& now, bool isNew, bool lookAgain) {
    disk.traffic = isNew ? DiskSectors{} : diskTraffic(disk.sectors, now);
    disk.sectors = now;
    disk.isNew = isNew;
    const bool moved = disk.traffic.read + disk.traffic.written > 0;
    if (isNew || (disk.isWhole && (lookAgain || (moved && !disk.hasSize)))) lookAtSize(disk);
  }

  void lookAtSize(Disk& disk) {
    const Descriptor file = openKernelFile(disk.sizeFile.c_str());
    if (!file && errno == ENOENT) disk.isWhole = false;
    auto text = file ? sizeText_.readOnce(file.get()) : std::nullopt;
    // Where it cannot be read just now, for want of descriptors, what is known stands.
    if (text) disk.hasSize = nextNumber(*text).value_or(0) > 0;
  }

  KernelFile diskstats_{"/proc/diskstats"};
  std::vector<Disk> disks_;
  SteadyTime lastLook_;
  ReadBuffer sizeText_;
};

struct State {
  explicit State(int (*waitFunction)(int)) : wait(waitFunction) {}

  int (*wait)(int);
  Disks disks;
  std::vector<diskStats> records;
};

}  // namespace

DISK_MON::DISK_MON(int (*wait)(int)) {
  auto* state = new State(wait);
  attach(opaque_, state);
  state->disks.read();
}

DISK_MON::~DISK_MON() {
  delete &attached<State>(opaque_);
}

void DISK_MON::corvane_setSamplingTime(int) {
  attached<State>(opaque_).disks.read();
}

std::vector<diskStats>* DISK_MON::corvane_getIOStats() {
  constexpr int slot = 8;
  auto& state = attached<State>(opaque_);
  state.records.clear();
  if (state.wait(slot) != ETIMEDOUT) return &state.records;
  if (!state.disks.read()) {
    noticeOnce("no disk traffic: /proc/diskstats cannot be read");
    return &state.records;
  }
  state.disks.publish(state.records);
  if (state.records.empty()) noticeOnce("no disk traffic: no disk of /sys/block has a size");
  return &state.records;
}

int DISK_MON::corvane_getNumOfIOStats() {
  return int(attached<State>(opaque_).records.size());
}

}  // namespace diskio
