// Whole trace files of one result file. The first byte of the input is its kind.

#include <filesystem>
#include <stdexcept>
#include <typeinfo>

#include "kinds.h"
#include "plain_convert.h"
#include "same.h"
#include "scratch_folder.h"
#include "toJson.h"

namespace {

/// What the call throws, or nothing.
template <class Call>
std::string faultOf(Call call) {
  try {
    call();
    return "";
  } catch (const std::logic_error& fault) {
    return typeid(fault).name();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const auto& folder = *new ScratchFolder;
  if (size == 0) return 0;
  const Console console;
  createMetadata("so that all others", "begin", "with", "a", "comma", "");
  const auto& kind = allKinds[data[0] % allKinds.size()];
  const std::string content(data + 1, data + size);
  const auto path = folder.write(std::string(kind.fileName) + ".txt", content);

  const auto fault = faultOf([] { jsonConvert(folder.path()); });
  std::filesystem::remove(path);
  std::string expected = "{\"displayTimeUnit\": \"ns\",\n \"traceEvents\": [";
  const auto expectedFault = faultOf([&] {
    plain::addEvents(plain::traceTable(content), kind.id, expected);
    expected += "]}\n";
  });
  expectSame(folder.read("ProfilerOutput.json"), expected, "trace");
  expectSame(fault, expectedFault, "fault");
  return 0;
}
