#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>

#include "attribute.h"

/// Whether an entry of the kernel's frequency scaling, by its folder, is the wanted one.
using DevfreqTest = std::function<bool(const std::string& folder)>;

/// Folder of the entry (`/sys/class/devfreq/*`) that passes the first test; where none does, the
/// second one decides, and so on. Empty where no entry passes any.
std::string findDevfreq(std::initializer_list<DevfreqTest> tests);

/// The clock of a device as the kernel's frequency scaling shows it, whoever made the device.
class Devfreq {
 public:
  /// An empty folder stands for an entry that does not exist.
  explicit Devfreq(const std::string& folder);

  bool exists() const { return frequency_.exists(); }
  bool hasLoad() const { return load_.exists(); }
  std::optional<std::uint64_t> hertz() { return frequency_.number(); }
  /// Percent, where the governor states it.
  std::optional<double> load() { return load_.percent(); }

 private:
  Attribute frequency_, load_;
};
