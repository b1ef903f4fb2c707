#pragma once

#include <signal.h>
#include <string_view>

// The console: standard output for the program's text, standard error for what else the user must
// know. No call waits for a reader that stands still: texts are kept until it goes on, and a reader
// that has gone away is a request to stop.

/// Writes one message to standard output. Threads share the console: a message that is put together
/// by several writes would be torn by theirs, so compose it first.
void say(std::string_view message);
/// The same for a message that is left out unless it can be written at once.
void sayAtOnceOrNever(std::string_view message);
/// For a signal handler: a piece, written now or lost but for its line ends.
void sayFromHandler(std::string_view piece);

/// Writes "corvane: <text>\n" to standard error in one write.
void warn(std::string_view text);

/// Makes descriptors 0 to 2 safe (a result file must not get one of them and the console's text),
/// and takes over standard output and standard error, the C++ streams included.
void prepareConsole();

/// Waits until all that was said is written or nobody reads it any more. Lets signals in by the
/// given mask meanwhile, and ends when `givenUp`, which is asked ten times a second, says so.
void finishConsole(const sigset_t& mask, bool (*givenUp)());
