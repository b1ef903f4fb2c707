#pragma once

#include <optional>
#include <string>
#include <vector>

#include "summary.h"
#include "sysip.h"

// The conversions written down as plainly as possible, with streams and a string for each field
// and the whole file in memory: slow, and what the fast ones must agree with.

namespace plain {

using Row = std::vector<std::string>;
using Table = std::vector<Row>;

Row split(const std::string& line);

/// What the three readers make of a file's content; the CSV's also counts the empty lines.
Table traceTable(const std::string& content);
Table csvTable(const std::string& content, int& emptyLines);
Table summaryTable(const std::string& content);

/// A field as a number of the CSV, if it is one, as it stands there, and as a sample of the
/// summary.
std::optional<float> number(const std::string& field);
std::string csvField(const std::string& field);
float sample(const std::string& field);

std::string csv(const Table& table);

/// Adds a file's events to `events`; what they throw ends the program, after those before.
void addEvents(const Table& table, SYSIP kind, std::string& events);

std::vector<Summary> summary(const Table& table, SYSIP kind);

}  // namespace plain
