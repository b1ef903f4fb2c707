#include "attribute.h"

#include <algorithm>
#include <charconv>
#include <utility>

Attribute::Attribute(std::string path)
    : path_(std::move(path)), file_(openKernelFile(path_.c_str())) {
  if (!file_) path_.clear();
}

std::optional<std::string_view> Attribute::text() {
  if (path_.empty()) return std::nullopt;
  auto content = file_ ? buffer_.readOnce(file_.get()) : std::nullopt;
  if (!content) {
    file_ = openKernelFile(path_.c_str());
    content = file_ ? buffer_.readOnce(file_.get()) : std::nullopt;
  }
  if (!content) return std::nullopt;
  const auto first = content->find_first_not_of(" \t\n");
  if (first == std::string_view::npos) return "";
  return content->substr(first, content->find_last_not_of(" \t\n") + 1 - first);
}

std::optional<std::uint64_t> Attribute::number() {
  const auto content = text();
  if (!content) return std::nullopt;
  std::uint64_t value = 0;
  const auto result = std::from_chars(content->data(), content->data() + content->size(), value);
  return result.ec == std::errc{} ? std::optional(value) : std::nullopt;
}

std::optional<double> Attribute::percent() {
  const auto value = number();
  return value ? std::optional(std::min(double(*value), 100.0)) : std::nullopt;
}
