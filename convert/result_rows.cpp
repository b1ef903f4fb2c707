#include "result_rows.h"

#include "print_line.h"

bool ResultRows::next() {
  std::string_view line;
  while (lines_.next(line)) {
    if (!line.empty()) {
      cutFields(line, fields_);
      return true;
    }
    if (reading_.tellsEmptyLines) printLine("Found an empty line");
  }
  const bool again = reading_.takesUnterminatedLastLineTwice && lines_.endedInsideLine();
  const bool row = again && !repeated_;
  repeated_ = true;
  return row;
}
