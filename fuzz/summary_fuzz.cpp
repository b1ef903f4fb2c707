// The rows that a result file adds to the table. The first byte of the input is its kind.

#include <array>
#include <cmath>
#include <stdexcept>

#include "plain_convert.h"
#include "same.h"
#include "scratch_folder.h"

namespace {

/// The sign of a sum of numbers that are none is the processor's and the compiler's choice.
std::string meanOf(const Summary& row) {
  return std::isnan(row.avg) ? "nan" : exactly(row.avg);
}

std::string textOf(const std::vector<Summary>& rows) {
  std::string text;
  for (const auto& row : rows) {
    text += row.name + " " + exactly(row.min) + " " + exactly(row.max);
    text += " " + meanOf(row) + "\n";
  }
  return text;
}

/// The rows, or that they cannot be.
template <class Call>
std::string rowsOf(Call call) {
  try {
    return textOf(call());
  } catch (const std::out_of_range&) {
    return "out of range";
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const auto& folder = *new ScratchFolder;
  constexpr std::array kinds{CPU_STATS, GPU_STATS, ADSP_STATS,  CDSP_STATS,
                             DDR_STATS, MEM_STATS, DISKIO_STATS};
  if (size == 0) return 0;
  const auto kind = kinds[data[0] % kinds.size()];
  const std::string content(data + 1, data + size);
  const auto path = folder.write("x.txt", content);
  const Console console;
  const auto rows = rowsOf([&] {
    for (auto* list : {&cpuSummaries, &gpuSummaries, &adspSummaries, &cdspSummaries, &ddrSummaries,
                       &memSummaries, &diskioSummaries})
      list->clear();
    summaryTable.clear();
    generateSummary(path, kind);
    return summaryTable.at(0);
  });
  expectSame(rows, rowsOf([&] { return plain::summary(plain::summaryTable(content), kind); }),
             "summary");
  return 0;
}
