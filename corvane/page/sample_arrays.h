#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Takes a piece of the page.
using Put = std::function<void(std::string_view)>;

/// The page's samples: arrays of numbers one behind the other, little-endian, as one base64 text
/// that is handed on as it grows. An array is referred to as [offset in bytes, count, type].
class SampleArrays {
 public:
  explicit SampleArrays(Put put) : put_(std::move(put)) {}

  /// Moments in seconds. The same moments as of late are not written again.
  nlohmann::json addTimes(const std::vector<double>& times);
  /// As 32-bit floats, which have all digits of a result file's numbers; larger ones as doubles.
  nlohmann::json addValues(const std::vector<double>& values);
  nlohmann::json addCounts(const std::vector<std::uint32_t>& counts);
  /// Ends the text.
  void finish();

 private:
  template <class Number>
  nlohmann::json add(std::span<const Number> numbers, const char* type);
  void put(std::string_view bytes);
  void flush();

  struct Known {
    std::vector<double> times;
    std::size_t at = 0;
  };

  Put put_;
  std::size_t size_ = 0;
  std::string text_;            // encoded, not yet handed on
  std::array<char, 3> rest_{};  // bytes that do not fill a group yet
  std::size_t resting_ = 0;
  std::array<Known, 32> known_;
  std::size_t nextKnown_ = 0;
};
