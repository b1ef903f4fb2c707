#pragma once

#include <string_view>

/// The exit statuses that all subcommands share.
enum Status : int { done = 0, finding = 1, wrongUse = 2, profilerFailed = 3 };

/// Writes "corvane: <text>\n" to standard error in one write, with what is no printable character
/// in it shown as "?": names come from strangers.
void message(std::string_view text);
