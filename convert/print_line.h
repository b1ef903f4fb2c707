#pragma once

#include <iostream>
#include <string>
#include <string_view>

/// Puts a line on standard output at once, also where that is no terminal.
inline void printLine(std::string_view line) {
  std::cout << line << '\n' << std::flush;
}

/// Puts a line on standard error in one piece.
inline void warnOf(std::string_view fault) {
  std::cerr << "corvane: " + std::string(fault) + "\n";
}
