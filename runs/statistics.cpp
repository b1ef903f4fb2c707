#include "statistics.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace runs {

namespace {

constexpr std::size_t smallestTable = 16;

/// The upper half of a float's bits, in the order of the values.
std::uint16_t keyOf(float value) {
  const auto bits = std::bit_cast<std::uint32_t>(value);
  const auto ordered = (bits & 0x8000'0000U) != 0 ? ~bits : bits | 0x8000'0000U;
  return std::uint16_t(ordered >> 16U);
}

float narrowed(double value) {
  constexpr double largest = std::numeric_limits<float>::max();
  return float(std::clamp(value, -largest, largest));
}

}  // namespace

void Range::merge(const Range& other) {
  if (other.count == 0) return;
  min = count == 0 ? other.min : std::min(min, other.min);
  max = count == 0 ? other.max : std::max(max, other.max);
  sum += other.sum;
  count += other.count;
}

void Statistics::add(double value) {
  if (!std::isfinite(value)) return;
  range_.add(value);
  const float sample = narrowed(value) + 0.0F;  // no negative zero
  auto& cell = cellOf(keyOf(sample));
  cell.low = cell.count == 0 ? sample : std::min(cell.low, sample);
  cell.high = cell.count == 0 ? sample : std::max(cell.high, sample);
  if (cell.count++ == 0) ++used_;
}

void Statistics::merge(const Statistics& other) {
  range_.merge(other.range_);
  for (const auto& from : other.table_) {
    if (from.count == 0) continue;
    auto& cell = cellOf(from.key);
    cell.low = cell.count == 0 ? from.low : std::min(cell.low, from.low);
    cell.high = cell.count == 0 ? from.high : std::max(cell.high, from.high);
    if (cell.count == 0) ++used_;
    cell.count += from.count;
  }
}

/// The cell of the key, which may be unused yet.
Statistics::Cell& Statistics::cellOf(std::uint16_t key) {
  if (used_ * 4 >= table_.size() * 3) grow();
  const auto mask = table_.size() - 1;
  auto at = (std::size_t{key} * 0x9E37'79B1U >> 8U) & mask;
  while (table_[at].count != 0 && table_[at].key != key)
    at = (at + 1) & mask;
  table_[at].key = key;
  return table_[at];
}

void Statistics::grow() {
  std::vector<Cell> old(std::max(smallestTable, table_.size() * 2));
  old.swap(table_);
  used_ = 0;
  for (const auto& cell : old) {
    if (cell.count == 0) continue;
    cellOf(cell.key) = cell;
    ++used_;
  }
}

std::vector<Statistics::Cell> Statistics::cells() const {
  std::vector<Cell> sorted;
  sorted.reserve(used_);
  std::ranges::copy_if(table_, std::back_inserter(sorted),
                       [](const Cell& cell) { return cell.count != 0; });
  std::ranges::sort(sorted, {}, &Cell::key);
  return sorted;
}

double Statistics::quantile(double p) const {
  const auto rank = std::max(1.0, std::ceil(p * double(range_.count)));
  double passed = 0;
  for (const auto& cell : cells()) {
    passed += cell.count;
    if (passed < rank) continue;
    const double middle = (double(cell.low) + double(cell.high)) / 2;
    return std::clamp(middle, range_.min, range_.max);
  }
  return 0;
}

}  // namespace runs
