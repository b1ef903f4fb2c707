#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "kernel_file.h"

/// A one-value attribute of a device that is read again and again. Its descriptor is kept; where
/// the device has gone and come back, the attribute is opened anew.
class Attribute {
 public:
  Attribute() = default;  ///< stands for an attribute that does not exist
  explicit Attribute(std::string path);

  /// Whether it was there when this was made.
  bool exists() const { return !path_.empty(); }
  /// The content without the blanks around it; nothing where it cannot be read now. Valid until
  /// the next read.
  std::optional<std::string_view> text();
  /// The number that the content starts with ("45" of "45@300000000Hz").
  std::optional<std::uint64_t> number();
  /// The same as a share of all, which is the most it can be.
  std::optional<double> percent();

 private:
  std::string path_;
  Descriptor file_;
  ReadBuffer buffer_;
};
