#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "attribute.h"

/// The clock of a device as the kernel's frequency scaling shows it (`/sys/class/devfreq/*`),
/// whoever made the device.
class Devfreq {
 public:
  /// The entry whose folder `isOfDevice` accepts, else the one whose name ends in the word `kind`
  /// ("5000000.gpu"). One that only mentions the word ("cdsp-l3-lat") is the clock of something
  /// else.
  static Devfreq find(std::string_view kind,
                      const std::function<bool(const std::string& folder)>& isOfDevice);

  bool exists() const { return frequency_.exists(); }
  bool hasLoad() const { return load_.exists(); }
  std::optional<std::uint64_t> hertz() { return frequency_.number(); }
  /// Percent, where the driver states it.
  std::optional<double> load();

 private:
  Attribute frequency_, load_;
};
