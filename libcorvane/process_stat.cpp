#include "process_stat.h"

#include "names.h"
#include "text_scan.h"

namespace {

void skipWords(std::string_view& text, int count) {
  for (; count > 0; --count)
    nextWord(text);
}

std::string_view lastComponent(std::string_view path) {
  const auto name = path.substr(path.rfind('/') + 1);
  return name.empty() ? path : name;
}

/// The kernel adds to a worker's name what it does just now, or did last: "kworker/0:1-events". The
/// name of a rescuer, "kworker/R-" and its queue, stays the same.
std::string_view withoutWork(std::string_view comm) {
  constexpr std::string_view worker = "kworker/";
  if (!comm.starts_with(worker) || comm.substr(worker.size()).starts_with("R-")) return comm;
  return comm.substr(0, comm.find_first_of("-+"));
}

}  // namespace

std::optional<ProcessStat> parseProcessStat(std::string_view text) {
  // The name may hold blanks, newlines and brackets; behind its own bracket there are none.
  const auto open = text.find('(');
  const auto close = text.rfind(')');
  if (open == text.npos || close == text.npos || close < open) return std::nullopt;
  const auto comm = text.substr(open + 1, close - open - 1);
  text.remove_prefix(close + 1);
  skipWords(text, 1);
  const auto parent = nextNumber<int>(text);
  skipWords(text, 9);
  const auto user = nextNumber(text);
  const auto system = nextNumber(text);
  skipWords(text, 6);
  const auto start = nextNumber(text);
  const auto bytes = nextNumber(text);
  if (!parent || !user || !system || !start || !bytes) return std::nullopt;
  return ProcessStat{.comm = comm,
                     .parentPid = *parent,
                     .userTicks = *user,
                     .systemTicks = *system,
                     .startTicks = *start,
                     .virtualBytes = *bytes};
}

std::string processName(std::string_view cmdline, std::string_view comm) {
  auto name = cmdline.substr(0, cmdline.find('\0'));
  // Processes that write over their arguments fill up the rest with blanks.
  name = name.substr(0, name.find_last_not_of(' ') + 1);
  if (name.starts_with('/')) name = lastComponent(name.substr(0, name.find(' ')));
  return safeName(name.empty() ? withoutWork(comm) : name, longestProcessName);
}
