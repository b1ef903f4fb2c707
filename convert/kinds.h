#pragma once

#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "summary.h"
#include "sysip.h"

/// From this column of the result file on, each value has this key in the trace; an empty key
/// gives no event.
struct KeyFrom {
  std::size_t column;
  std::string_view key;
};

/// One event for each column; the track is the column's number.
struct ColumnEvents {
  std::span<const KeyFrom> keys;
  bool namedByHeader = false;  // by the header's field; else by the kind
};

struct KeyOfField {
  std::string_view key;  // with its leading blanks
  std::size_t field;
};

enum class Track { row, process, hashOfName };  // the row's number, or field 1, or field 1 hashed

/// The same few events for each row.
struct RowEvents {
  std::span<const KeyOfField> values;
  std::size_t nameField = 0;  // 0: named by the kind
  Track track = Track::row;
  bool bytesToMb = false;  // values are counts of bytes; a row that has none is an error
};

/// All that tells the kinds of result files apart.
struct Kind {
  SYSIP id;
  std::string_view fileName;  // a part of the path of each of its files
  std::string_view name;
  std::string_view pid, metadataTid;  // in the trace
  bool metadataEchoed = false;        // on standard output
  const char* traceNotice = nullptr;  // printed before its events are made; null: nothing
  std::variant<ColumnEvents, RowEvents> events;
  const char* summaryPrefix = "";
  std::vector<Summary>* summaries = nullptr;  // null: the kind is not summarised
};

/// In the order in which a path is tested for them.
extern const std::span<const Kind> allKinds;

/// Null for a number that is no kind.
const Kind* findKind(SYSIP id);

/// Those kinds whose file name is a part of the path (of its folder's name, too), each of which
/// reads the file.
inline bool isFileOf(const Kind& kind, const std::string& path) {
  return path.find(kind.fileName) != std::string::npos;
}

/// What is printed before a kind's reader gets a file.
std::string announcement(const Kind& kind);
