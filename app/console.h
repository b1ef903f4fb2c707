#pragma once

#include <string_view>

/// Writes one message to standard output and flushes it. Threads share the console: a message that
/// is put together by several writes would be torn by theirs, so compose it first.
void say(std::string_view message);

/// Writes "corvane: <text>\n" to standard error in one write: what the user must know beyond the
/// program's own output.
void warn(std::string_view text);

/// Makes descriptors 0 to 2 safe (a result file must not get one of them and the console's text)
/// and standard output line-buffered, so that live rows arrive in time on a pipe, too.
void prepareConsole();
