#pragma once

#include <limits>

#include "attribute.h"
#include "text_scan.h"

inline constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

/// The attribute's number, which may be negative, times `scale`; NaN where it has none now.
inline double reading(Attribute& attribute, double scale) {
  const auto text = attribute.text();
  const auto number = text ? toNumber<std::int64_t>(*text) : std::nullopt;
  return number ? double(*number) * scale : unknown;
}
