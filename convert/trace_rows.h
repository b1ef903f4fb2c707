#pragma once

#include <string>
#include <vector>

#include "kinds.h"
#include "output_file.h"
#include "result_rows.h"

/// Writes the counter events of all rows from the current one on, which is the first after the
/// header. Throws std::out_of_range where a row does not fit its header or has no byte counts, and
/// std::invalid_argument where a byte count is none.
void putRows(const Kind& kind, const std::vector<std::string>& header, ResultRows& rows,
             OutputFile& trace);
