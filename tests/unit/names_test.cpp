#include "names.h"

#include <gtest/gtest.h>

namespace {

TEST(Names, CannotBreakALineOfText) {
  struct {
    std::string_view name, safe;
  } const cases[] = {
      {"", "_"},
      {"kworker/0:1", "kworker/0:1"},
      {"a b", "a b"},
      {"a\nb\tc\rd\x7F", "a_b_c_d_"},
      {"q\"b\\c,d", "q_b_c_d"},
      {std::string_view("n\0l", 3), "n_l"},
      {"gr\xC3\xBC\xC3\x9F", "gr\xC3\xBC\xC3\x9F"},
      {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
      {"cut\xC3", "cut_"},
      {"\xC0\xAF\xED\xA0\x80\xF4\x90\x80\x80", "_________"},
      {"123456789012345678901234567890123456789", "123456789012345678901234567890123456789"},
      {"1234567890123456789012345678901234567890", "123456789012345678..2345678901234567890"},
      {"12345678901234567\xC3\xBC..........................",
       "12345678901234567....................."},
  };
  for (const auto& [name, safe] : cases) {
    EXPECT_EQ(safeName(name, longestProcessName), safe) << name;
  }
}

}  // namespace
