#pragma once

#include <cstdio>
#include <cstdlib>
#include <iostream>
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
