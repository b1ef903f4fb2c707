#include "trace_event.h"

#include "print_line.h"
#include "toJson.h"

namespace {

/// Whether an event is in the trace already, after which the next one needs a comma. Never reset:
/// a process converts once.
bool firstEventMade = false;

struct Text {
  std::string text;
  template <class... Texts>
  void put(const Texts&... texts) {
    (text.append(texts), ...);
  }
};

}  // namespace

std::string createMetadata(std::string name, std::string ts, std::string pid, std::string tid,
                           [[maybe_unused]] std::string argName, std::string argValue) {
  printLine("Name = " + name);
  printLine("TS = " + ts);
  printLine("PID = " + pid);
  printLine("TID = " + tid);
  Text event;
  event.put(firstEventMade ? "," : "", R"({"name" : ")", name,
            R"(" ,"cat" : "corv:" , "ph" : "M", "ts" : )", ts, R"(, "pid" : )", pid,
            R"(, "tid" : )", tid, R"(, "args" : {"name" : ")", argValue, R"("}})");
  firstEventMade = true;
  return event.text;
}

std::string createCounterEvent(std::string name, std::string ts, std::string pid, std::string tid,
                               std::string key, std::string value, int separator) {
  Text event;
  putCounterEvent(event, separator != 0 ? "," : "", name, ts, pid, tid, key, value);
  return event.text;
}
