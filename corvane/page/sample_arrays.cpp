#include "sample_arrays.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <nlohmann/json.hpp>

namespace {

static_assert(std::endian::native == std::endian::little, "browsers read arrays as they lie");

constexpr std::string_view letters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void appendGroup(std::string& text, std::span<const char> bytes) {
  const auto at = [&](int i) {
    return std::uint32_t(static_cast<unsigned char>(bytes[std::size_t(i)]));
  };
  const std::uint32_t group = at(0) << 16 | at(1) << 8 | at(2);
  for (const int shift : {18, 12, 6, 0})
    text += letters[group >> shift & 63];
}

/// The least whole number that a 32-bit float does not hold for certain.
constexpr double floatEnd = 1 << 24;
constexpr std::size_t widest = sizeof(double);

}  // namespace

void SampleArrays::put(std::string_view bytes) {
  size_ += bytes.size();
  while (resting_ > 0 && !bytes.empty()) {
    rest_[resting_++] = bytes.front();
    bytes.remove_prefix(1);
    if (resting_ == rest_.size()) {
      appendGroup(text_, rest_);
      resting_ = 0;
    }
  }
  for (; bytes.size() >= rest_.size(); bytes.remove_prefix(rest_.size()))
    appendGroup(text_, bytes);
  for (const char byte : bytes)
    rest_[resting_++] = byte;
  if (text_.size() >= 1 << 16) flush();
}

void SampleArrays::flush() {
  put_(text_);
  text_.clear();
}

void SampleArrays::finish() {
  if (resting_ > 0) {
    std::fill(rest_.begin() + std::ptrdiff_t(resting_), rest_.end(), '\0');
    appendGroup(text_, rest_);
    std::fill_n(text_.end() - std::ptrdiff_t(rest_.size() - resting_), rest_.size() - resting_,
                '=');
  }
  flush();
}

template <class Number>
nlohmann::json SampleArrays::add(std::span<const Number> numbers, const char* type) {
  static constexpr std::array<char, widest> zeros{};
  put({zeros.data(), (widest - size_ % widest) % widest});
  const auto at = size_;
  put({reinterpret_cast<const char*>(numbers.data()), numbers.size_bytes()});
  return {at, numbers.size(), type};
}

nlohmann::json SampleArrays::addTimes(const std::vector<double>& times) {
  const auto found = std::ranges::find(known_, times, &Known::times);
  if (found != known_.end()) return {found->at, times.size(), "f64"};
  auto reference = add(std::span(times), "f64");
  known_[nextKnown_++ % known_.size()] = {times, reference[0].get<std::size_t>()};
  return reference;
}

nlohmann::json SampleArrays::addValues(const std::vector<double>& values) {
  if (std::ranges::any_of(values, [](double value) { return std::abs(value) >= floatEnd; }))
    return add(std::span(values), "f64");
  const std::vector<float> narrow(values.begin(), values.end());
  return add(std::span(narrow), "f32");
}

nlohmann::json SampleArrays::addCounts(const std::vector<std::uint32_t>& counts) {
  return add(std::span(counts), "u32");
}
