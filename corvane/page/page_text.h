#pragma once

#include <string_view>

/// The page without what a run puts into it: the samples come between the first two pieces, the
/// head between the last two.
struct PageText {
  std::string_view begin, middle, end;
};

extern const PageText pageText;
