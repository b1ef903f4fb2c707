#pragma once

#include <string_view>

/// Puts the text of one sample of a counter into `sink`, which has a put() of many texts. Every
/// counter event is made here.
template <class Sink>
void putCounterEvent(Sink& sink, std::string_view comma, std::string_view name, std::string_view ts,
                     std::string_view pid, std::string_view tid, std::string_view key,
                     std::string_view value) {
  using std::string_view_literals::operator""sv;
  sink.put(comma, R"({"name" : ")"sv, name, R"(" ,"cat" : "corv:" , "ph" : "C", "ts" : )"sv, ts,
           R"(, "pid" : )"sv, pid, R"(, "tid" : )"sv, tid, R"(, "args" : {")"sv, key, R"(" : ")"sv,
           value, R"("}})"sv);
}
