// Runs one conversion of a run folder, as the profiler does at the end of a run, and says on
// standard error how much memory it took.
//   convert_folder json|csv|summary FOLDER

#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <string>

#include "summary.h"
#include "toCsv.h"
#include "toJson.h"

namespace {

void tellPeakMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmHWM:")) std::cerr << line << '\n';
}

}  // namespace

int main(int count, char** arguments) {
  const std::map<std::string, std::function<int(std::string)>> conversions{
      {"json", jsonConvert}, {"csv", csvConvert}, {"summary", getSummary}};
  const auto conversion = conversions.find(count == 3 ? arguments[1] : "");
  if (conversion == conversions.end()) {
    std::cerr << "usage: convert_folder json|csv|summary FOLDER\n";
    return 2;
  }
  conversion->second(arguments[2]);
  tellPeakMemory();
  return 0;
}
