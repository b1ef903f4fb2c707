#pragma once

#include <string_view>

/// Writes the text to standard output. False after a message where it, or what was put there
/// before, cannot be written.
bool putOut(std::string_view text);
