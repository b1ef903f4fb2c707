#include "json_text.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// Cuts digits off; false where there are none.
bool cutDigits(std::string_view& text) {
  const auto before = text.size();
  while (!text.empty() && isDigit(text.front()))
    text.remove_prefix(1);
  return text.size() != before;
}

bool cut(std::string_view& text, std::string_view any) {
  const bool found = !text.empty() && any.find(text.front()) != std::string_view::npos;
  if (found) text.remove_prefix(1);
  return found;
}

}  // namespace

std::string jsonString(std::string_view text) {
  return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

bool isJsonNumber(std::string_view text) {
  cut(text, "-");
  if (cut(text, "0")) {
    if (!text.empty() && isDigit(text.front())) return false;
  } else if (!cutDigits(text)) {
    return false;
  }
  if (cut(text, ".") && !cutDigits(text)) return false;
  if (!cut(text, "eE")) return text.empty();
  cut(text, "+-");
  return cutDigits(text) && text.empty();
}

std::string jsonNumber(double number) {
  if (!std::isfinite(number)) return "0";
  char digits[32];
  return {digits, std::to_chars(digits, std::end(digits), number).ptr};
}
