#include "result_rows.h"

#include <iostream>

bool ResultRows::next() {
  std::string_view line;
  while (lines_.next(line)) {
    if (!line.empty()) {
      cutFields(line, fields_);
      return true;
    }
    if (reading_.tellsEmptyLines) std::cout << "Found an empty line" << std::endl;
  }
  const bool again = reading_.takesUnterminatedLastLineTwice && lines_.endedInsideLine();
  const bool row = again && !repeated_;
  repeated_ = true;
  return row;
}
