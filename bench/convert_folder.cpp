// Runs one conversion of a run folder, as the profiler does at the end of a run, and says on
// standard error how much memory it took.
//   convert_folder json|csv|summary FOLDER

#include <cstdio>
#include <exception>
#include <fstream>
#include <string>

#include "summary.h"
#include "toCsv.h"
#include "toJson.h"

namespace {

void convert(const std::string& to, const std::string& folder) {
  if (to == "json") jsonConvert(folder);
  if (to == "csv") csvConvert(folder);
  if (to == "summary") getSummary(folder);
}

void tellPeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmHWM:")) std::fprintf(stderr, "%s\n", line.c_str());
}

}  // namespace

int main(int count, char** arguments) try {
  if (count != 3) return 2;
  convert(arguments[1], arguments[2]);
  tellPeakMemory();
  return 0;
} catch (const std::exception& fault) {
  std::fprintf(stderr, "convert_folder: %s\n", fault.what());
  return 1;
}
