#include "gpu_driver.h"

#include <algorithm>
#include <initializer_list>
#include <utility>
#include <vector>

#include "devfreq.h"
#include "text_scan.h"

namespace {

using Form = DriverAttribute::Form;

struct Named {
  std::string_view name;
  Form form;
};

using Folders = std::vector<std::string>;

/// Where drivers have put their attributes.
struct Place {
  std::string_view pattern;  ///< of the folders
  /// The folders, given the one in which another value was found.
  Folders (*folders)(const std::string& found);
  std::vector<Named> loads, clocks;
};

/// Drivers give their classes names of their own, so every class is looked through.
Folders classDevices(const std::string&) {
  Folders folders;
  const std::string classes = "/sys/class/";
  for (const auto& name : listFolder(classes)) {
    const auto kind = classes + name + '/';
    for (const auto& device : listFolder(kind))
      folders.push_back(kind + device);
  }
  return folders;
}

Folders platformDevices(const std::string&) {
  Folders folders{"/sys/class/misc/mali0/device"};
  const std::string devices = "/sys/bus/platform/devices/";
  for (const auto& device : listFolder(devices)) {
    if (isGpuName(device)) folders.push_back(devices + device);
  }
  return folders;
}

std::string lastName(const std::optional<std::string>& path) {
  return path ? path->substr(path->rfind('/') + 1) : "";
}

/// The entry of a graphics card, else of the device that was found, else of one that is named after
/// a graphics processor or whose driver is.
Folders scaledDevice(const std::string& found) {
  const auto isCard = [](const std::string& entry) {
    return !listFolder(entry + "/device/drm").empty();
  };
  const auto isTheFoundOne = [&](const std::string& entry) {
    const auto device = resolvedPath(entry + "/device");
    return device && !found.empty() &&
           (device == resolvedPath(found + "/device") || device == resolvedPath(found));
  };
  const auto isNamedAfterOne = [](const std::string& entry) {
    return isGpuName(lastName(entry)) || isGpuName(lastName(resolvedPath(entry + "/device"))) ||
           isGpuName(lastName(resolvedPath(entry + "/device/driver")));
  };
  const auto entry = findDevfreq({isCard, isTheFoundOne, isNamedAfterOne});
  return entry.empty() ? Folders() : Folders{entry};
}

/// Those that are hardly ever wrong come first.
const std::vector<Place>& places() {
  static const auto& all = *new std::vector<Place>{
      {.pattern = "/sys/class/*/*",
       .folders = classDevices,
       .loads = {{"gpu_busy_percentage", Form::percent}, {"gpubusy", Form::busyAndTotal}},
       .clocks = {{"gpuclk", Form::clock}, {"clock_mhz", Form::clock}}},
      {.pattern = "{/sys/class/misc/mali0/device,/sys/bus/platform/devices/*}",
       .folders = platformDevices,
       .loads = {{"utilization", Form::percent},
                 {"utilisation", Form::percent},
                 {"gpu_busy", Form::percent}},
       .clocks = {{"clock", Form::clock}, {"gpu_clock", Form::clock}, {"cur_freq", Form::clock}}},
      {.pattern = "/sys/kernel/gpu",
       .folders = [](const std::string&) { return Folders{"/sys/kernel/gpu"}; },
       .loads = {{"gpu_busy", Form::percent}},
       .clocks = {{"gpu_clock", Form::clock}}},
      {.pattern = "/sys/kernel/ged/hal",
       .folders = [](const std::string&) { return Folders{"/sys/kernel/ged/hal"}; },
       .loads = {{"gpu_utilization", Form::percent}},
       .clocks = {{"current_freqency", Form::clock}, {"current_frequency", Form::clock}}},
      {.pattern = "/sys/class/devfreq/*",
       .folders = scaledDevice,
       .loads = {{"load", Form::percent}},
       .clocks = {{"cur_freq", Form::clock}}},
  };
  return all;
}

using Names = std::vector<Named> Place::*;

struct Found {
  DriverAttribute attribute;
  std::string folder;
};

/// Finds one of the values, given the folder in which another one was found.
Found findValue(Names names, const std::string& folderOfOther) {
  Found first;
  for (const auto& place : places()) {
    for (const auto& folder : place.folders(folderOfOther)) {
      for (const auto& [name, form] : place.*names) {
        Found found{DriverAttribute(folder + "/" + std::string(name), form), folder};
        if (!found.attribute.exists()) continue;
        if (found.attribute.read()) return found;
        if (!first.attribute.exists()) first = std::move(found);
      }
    }
  }
  return first;
}

std::string patterns(std::initializer_list<Names> values) {
  std::string text;
  for (const auto& place : places()) {
    std::string names;
    for (const auto value : values) {
      for (const auto& attribute : place.*value)
        names.append(names.empty() ? "" : ",").append(attribute.name);
    }
    text.append(text.empty() ? "" : ", ").append(place.pattern).append("/");
    text += names.find(',') == names.npos ? names : "{" + names + "}";
  }
  return text;
}

std::optional<double> busyShare(std::string_view text) {
  const auto busy = nextNumber(text), total = nextNumber(text);
  if (!busy || !total) return std::nullopt;
  // No time has been counted where it slept for all of it.
  return *total == 0 ? 0 : std::min(100 * double(*busy) / double(*total), 100.0);
}

/// Clocks are stated in MHz, KHz or Hz, by drivers that do not say which: a graphics processor runs
/// at 10 MHz to 10 GHz, so the size of the number tells.
double megahertz(std::uint64_t number) {
  const double unit = number < 10'000 ? 1 : number < 10'000'000 ? 1e3 : 1e6;
  return double(number) / unit;
}

/// A number is often followed by its unit, and led by a load or by the place in a table of clocks.
std::optional<double> clockIn(std::string_view text) {
  constexpr std::string_view digits = "0123456789";
  const auto end = text.find_last_of(digits);
  if (end == text.npos) return std::nullopt;
  const auto start = text.find_last_not_of("0123456789.", end) + 1;
  const auto number = toNumber(text.substr(start, text.find_first_not_of(digits, start) - start));
  return number ? std::optional(megahertz(*number)) : std::nullopt;
}

}  // namespace

std::optional<double> DriverAttribute::read() {
  if (form_ == Form::percent) return attribute_.percent();
  const auto text = attribute_.text();
  if (!text) return std::nullopt;
  return form_ == Form::clock ? clockIn(*text) : busyShare(*text);
}

GpuDriver GpuDriver::find() {
  auto load = findValue(&Place::loads, "");
  auto clock = findValue(&Place::clocks, load.folder);
  GpuDriver driver;
  driver.load_ = std::move(load.attribute);
  driver.clock_ = std::move(clock.attribute);
  return driver;
}

std::string GpuDriver::loadPatterns() {
  return patterns({&Place::loads});
}

std::string GpuDriver::clockPatterns() {
  return patterns({&Place::clocks});
}

std::string GpuDriver::allPatterns() {
  return patterns({&Place::loads, &Place::clocks});
}

bool isGpuName(std::string_view name) {
  const auto holds = [name](std::string_view word) { return name.find(word) != name.npos; };
  constexpr std::string_view processors[] = {"gpu", "mali", "g3d", "pvr", "sgx", "rgx"};
  constexpr std::string_view feeders[] = {"bus", "bw", "lat", "mem", "llcc", "ddr", "noc"};
  return std::ranges::any_of(processors, holds) && std::ranges::none_of(feeders, holds);
}
