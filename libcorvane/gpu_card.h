#pragma once

#include <optional>
#include <string>

#include "attribute.h"

/// What a graphics card's driver states in attributes of its own (`/sys/class/drm/card*`). A value
/// whose attribute the driver has not, or does not give now, is missing.
class GpuCard {
 public:
  GpuCard() = default;  ///< stands for a card that does not exist
  /// The first card that states how busy it is, else the first that states its clock.
  static GpuCard find();

  bool hasLoad() const { return busy_.exists(); }
  bool hasBusLoad() const { return memoryBusy_.exists(); }
  bool hasClock() const { return clock_.exists(); }
  std::optional<double> load() { return busy_.percent(); }
  std::optional<double> busLoad() { return memoryBusy_.percent(); }
  std::optional<double> megahertz();

 private:
  explicit GpuCard(const std::string& folder);

  Attribute busy_, memoryBusy_, clock_;
  double megahertzPerUnit_ = 1;
};

/// Whether the machine has a graphics device at all.
bool hasDrmDevice();
