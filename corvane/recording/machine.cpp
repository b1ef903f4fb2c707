#include "machine.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string_view>
#include <sys/utsname.h>
#include <unistd.h>

#include "cpu_list.h"
#include "kernel_file.h"
#include "text_scan.h"

namespace {

const std::string coresFolder = "/sys/devices/system/cpu/";

/// "0-3,6" of 0 1 2 3 6.
std::string asCpuList(const std::vector<int>& cores) {
  std::string text;
  for (std::size_t i = 0; i < cores.size();) {
    std::size_t last = i;
    while (last + 1 < cores.size() && cores[last + 1] == cores[last] + 1)
      ++last;
    text += (text.empty() ? "" : ",") + std::to_string(cores[i]);
    if (last > i) text += "-" + std::to_string(cores[last]);
    i = last + 1;
  }
  return text;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\n");
  return first == text.npos ? "" : text.substr(first, text.find_last_not_of(" \t\n") + 1 - first);
}

/// Arm's own cores by the number that they state of themselves.
std::string armCore(std::string_view maker, std::string_view part) {
  constexpr std::pair<std::string_view, const char*> parts[] = {
      {"0xd03", "Cortex-A53"}, {"0xd04", "Cortex-A35"},  {"0xd05", "Cortex-A55"},
      {"0xd07", "Cortex-A57"}, {"0xd08", "Cortex-A72"},  {"0xd09", "Cortex-A73"},
      {"0xd0a", "Cortex-A75"}, {"0xd0b", "Cortex-A76"},  {"0xd0c", "Neoverse-N1"},
      {"0xd0d", "Cortex-A77"}, {"0xd40", "Neoverse-V1"}, {"0xd41", "Cortex-A78"},
      {"0xd44", "Cortex-X1"},  {"0xd46", "Cortex-A510"}, {"0xd47", "Cortex-A710"},
      {"0xd48", "Cortex-X2"},  {"0xd49", "Neoverse-N2"}, {"0xd4d", "Cortex-A715"},
      {"0xd4e", "Cortex-X3"},  {"0xd80", "Cortex-A520"}, {"0xd81", "Cortex-A720"},
      {"0xd82", "Cortex-X4"}};
  const auto known = std::ranges::find(parts, part, [](const auto& entry) { return entry.first; });
  if (maker == "0x41" && known != std::end(parts)) return known->second;
  return "maker " + std::string(maker) + ", part " + std::string(part);
}

/// Cores of one name together, in the order of their first ones.
std::vector<runs::Processor> processors(std::string_view cpuinfo) {
  std::vector<std::pair<std::string, std::vector<int>>> kinds;
  int core = -1;
  std::string name;
  std::string_view maker;
  const auto take = [&] {
    if (core < 0 || name.empty()) return;
    auto kind = std::ranges::find(kinds, name, [](const auto& entry) { return entry.first; });
    if (kind == kinds.end()) kind = kinds.insert(kind, {name, {}});
    kind->second.push_back(core);
    name.clear();
  };
  std::string_view line;
  while (nextLine(cpuinfo, line)) {
    const auto colon = line.find(':');
    const auto key = trimmed(line.substr(0, colon));
    const auto value = colon == line.npos ? "" : trimmed(line.substr(colon + 1));
    if (key == "processor") {
      take();
      core = toNumber<int>(value).value_or(-1);
    } else if (key == "model name") {
      name = value;
    } else if (key.starts_with("CPU impl")) {
      maker = value;
    } else if (key == "CPU part" && name.empty()) {
      name = armCore(maker, value);
    }
  }
  take();
  std::vector<runs::Processor> named;
  named.reserve(kinds.size());
  for (const auto& [kind, cores] : kinds)
    named.push_back({.name = kind, .cores = asCpuList(cores)});
  return named;
}

std::vector<runs::FrequencyPolicy> frequencies() {
  std::vector<runs::FrequencyPolicy> policies;
  const auto folder = coresFolder + "cpufreq/";
  for (const auto& entry : listFolder(folder)) {
    const auto cores = readAttribute(folder + entry + "/related_cpus");
    if (!entry.starts_with("policy") || !cores) continue;
    std::vector<int> numbers;
    std::string_view words = *cores;
    for (auto core = nextNumber<int>(words); core; core = nextNumber<int>(words))
      numbers.push_back(*core);
    const auto khz = [&](const char* file) {
      return std::uint64_t(readNumber(folder + entry + file).value_or(0));
    };
    policies.push_back(
        {.cores = asCpuList(numbers),
         .governor = readAttribute(folder + entry + "/scaling_governor").value_or(""),
         .minKhz = khz("/scaling_min_freq"),
         .maxKhz = khz("/scaling_max_freq")});
  }
  return policies;
}

std::string model() {
  if (auto text = readAttribute("/proc/device-tree/model")) {
    std::erase(*text, '\0');
    return *text;
  }
  const auto vendor = readAttribute("/sys/class/dmi/id/sys_vendor").value_or("");
  const auto product = readAttribute("/sys/class/dmi/id/product_name").value_or("");
  return vendor.empty() || product.empty() ? vendor + product : vendor + " " + product;
}

/// What names build and device, from the program that every Android device has for it.
std::map<std::string, std::string> androidProperties() {
  constexpr std::array wanted{
      "ro.product.manufacturer",  "ro.product.model", "ro.product.device",
      "ro.build.fingerprint",     "ro.build.id",      "ro.build.type",
      "ro.build.version.release", "ro.soc.model",     "ro.build.version.sdk",
      "ro.board.platform",        "ro.hardware",      "ro.build.version.security_patch"};
  std::map<std::string, std::string> properties;
  const auto getprop = kernelRoot() + "/system/bin/getprop";
  if (::access(getprop.c_str(), X_OK) != 0) return properties;
  const std::unique_ptr<FILE, int (*)(FILE*)> lines(::popen(getprop.c_str(), "re"), ::pclose);
  std::array<char, 512> line{};
  while (lines && std::fgets(line.data(), int(line.size()), lines.get()) != nullptr) {
    const std::string_view text = trimmed(line.data());  // [name]: [value]
    const auto middle = text.find("]: [");
    if (middle == text.npos || !text.starts_with('[') || !text.ends_with(']')) continue;
    const auto name = text.substr(1, middle - 1);
    if (std::ranges::find(wanted, name) == wanted.end()) continue;
    properties[std::string(name)] = text.substr(middle + 4, text.size() - middle - 5);
  }
  return properties;
}

std::uint64_t memoryKb() {
  const auto meminfo = readAttribute("/proc/meminfo").value_or("");
  std::string_view text = meminfo, line;
  while (nextLine(text, line))
    if (nextWord(line) == "MemTotal:") return nextNumber(line).value_or(0);
  return 0;
}

}  // namespace

runs::Host describeHost() {
  utsname system{};
  ::uname(&system);
  const auto possible = parseCpuList(readAttribute(coresFolder + "possible").value_or(""));
  return {.name = system.nodename,
          .model = model(),
          .kernel = std::string(system.sysname) + " " + system.release + " " + system.version,
          .architecture = system.machine,
          .cores = possible.empty() ? 0 : possible.back() + 1,
          .onlineCores = readAttribute(coresFolder + "online").value_or(""),
          .processors = processors(readAttribute("/proc/cpuinfo").value_or("")),
          .frequencies = frequencies(),
          .pageSize = ::sysconf(_SC_PAGESIZE),
          .memoryKb = memoryKb(),
          .android = androidProperties()};
}
