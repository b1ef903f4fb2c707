#pragma once

#include <string_view>
#include <vector>

/// A line's fields as views into it. Used again for every line, so that nothing is allocated once
/// it has grown to the widest.
using Fields = std::vector<std::string_view>;

/// Replaces `fields` by those of `line`: what stands between blanks (code 32 alone), never empty.
void cutFields(std::string_view line, Fields& fields);
