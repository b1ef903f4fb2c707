#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "attribute.h"

/// One attribute of a driver and the form that its driver gives it.
class DriverAttribute {
 public:
  enum class Form {
    percent,       ///< what the text begins with: "12 %", "12", "12@450000000Hz", "12 0 88"
    busyAndTotal,  ///< two amounts of time since the last reading: "120000 1000000"
    clock,         ///< what the text ends in: "450", "450 MHz", "15 450000", "12@450000000Hz"
  };

  DriverAttribute() = default;  ///< stands for one that does not exist
  DriverAttribute(const std::string& path, Form form) : attribute_(path), form_(form) {}

  bool exists() const { return attribute_.exists(); }
  /// Percent or MHz; nothing where the driver states none now. Reading may set the driver's
  /// counters back, so a sample does it once.
  std::optional<double> read();

 private:
  Attribute attribute_;
  Form form_ = Form::percent;
};

/// What the driver of a graphics processor, a phone's above all, states outside of DRM, in
/// attributes of its own and in those of frequency scaling.
class GpuDriver {
 public:
  GpuDriver() = default;  ///< stands for a driver that states nothing
  /// For each of the two values the first attribute that answers, of the places where drivers have
  /// put them; else the first that is there, which may answer later.
  static GpuDriver find();

  bool hasLoad() const { return load_.exists(); }
  bool hasClock() const { return clock_.exists(); }
  std::optional<double> load() { return load_.read(); }
  std::optional<double> megahertz() { return clock_.read(); }

  /// What find() looks for, as a shell would list it.
  static std::string loadPatterns();
  static std::string clockPatterns();
  static std::string allPatterns();

 private:
  DriverAttribute load_, clock_;
};

/// Whether a device or a driver is a graphics processor's by its name ("5000000.gpu", "mali.0"),
/// and not that of a bus or a memory that feeds one ("1000.gpu-bus", "soc:gpubw").
bool isGpuName(std::string_view name);
