#pragma once

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>

/// Ends the run where two ways of doing the same differ.
inline void expectSame(const std::string& fast, const std::string& slow, const char* what) {
  if (fast == slow) return;
  std::fprintf(stderr, "%s: \"%s\" instead of \"%s\"\n", what, fast.c_str(), slow.c_str());
  std::abort();
}

/// Fields as one text that no other fields have.
template <class Fields>
std::string joined(const Fields& fields) {
  std::string text;
  for (const auto& field : fields)
    text.append("<").append(field).append("> ");
  return text;
}

/// A number's text that no other number has, not-a-number included.
inline std::string exactly(float value) {
  char text[64];
  std::snprintf(text, sizeof text, "%a", double(value));
  return text;
}

/// Compares the bits, so that two that are not a number compare, and 0 is not -0.
inline void expectSame(std::optional<float> fast, std::optional<float> slow, const char* what) {
  const auto bits = [](float value) { return std::bit_cast<std::uint32_t>(value); };
  if (fast.has_value() == slow.has_value() && (!fast || bits(*fast) == bits(*slow))) return;
  expectSame(fast ? exactly(*fast) : "none", slow ? exactly(*slow) : "none", what);
  std::abort();  // not the same, though they look it
}

/// Keeps what is printed on standard output while it lives.
class Console {
 public:
  Console() : real_(std::cout.rdbuf(text_.rdbuf())) {}
  ~Console() { std::cout.rdbuf(real_); }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;
  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::streambuf* real_;
};
