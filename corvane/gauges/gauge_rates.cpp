#include "gauge_rates.h"

#include <algorithm>

#include "reading.h"

namespace {

/// More than a zone of any machine takes: what begins anew after more was reset in the middle.
constexpr double mostPlausibleWatts = 5000;

}  // namespace

double meanPower(std::optional<std::uint64_t> before, std::optional<std::uint64_t> now,
                 std::uint64_t range, double seconds) {
  if (!before || !now || seconds <= 0) return unknown;
  if (*now >= *before) return double(*now - *before) * 1e-6 / seconds;
  const double watts = (double(range) - double(*before) + double(*now)) * 1e-6 / seconds;
  return *before <= range && watts < mostPlausibleWatts ? watts : unknown;
}

double shareOfTime(std::optional<std::uint64_t> before, std::optional<std::uint64_t> now,
                   double seconds) {
  if (!before || !now || *now < *before || seconds <= 0) return unknown;
  // The kernel may account a wait a little later than it happened.
  return std::min(100.0, double(*now - *before) * 1e-4 / seconds);
}
