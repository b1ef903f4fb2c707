#pragma once

#include <string_view>

/// Says on standard error what could not be measured and why, in one write: "corvane: <text>\n".
/// Once a process for the same text; standard output belongs to the program.
void noticeOnce(std::string_view text);

/// What was said may be said again. Only tests, which are many machines in one process, forget.
void forgetNotices();
