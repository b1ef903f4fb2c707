#pragma once

#include <string_view>

/// The exit statuses that all subcommands share.
enum Status : int { done = 0, finding = 1, wrongUse = 2, profilerFailed = 3 };

/// Writes "corvane: <text>\n" to standard error in one write. Control characters in it, of a name
/// that a stranger gave, are shown as '?'.
void message(std::string_view text);
