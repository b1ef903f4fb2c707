// Any bytes as the result files of a run. The first byte says which files; 0xFF ends one of them.

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>

#include "run_summary.h"
#include "scratch_folder.h"

namespace {

constexpr std::array prefixes{"cpu",    "gpu",      "ddr", "mem", "proc",
                              "diskio", "procmem-", "net", "new"};

void require(bool holds) {
  if (!holds) std::abort();
}

/// What is true of any run's statistics.
void check(const runs::RunSummary& run) {
  for (const auto& series : run.metrics) {
    const auto& statistics = series.statistics;
    require(statistics.count() != 0 && statistics.min() <= statistics.quantile(0.5));
    require(statistics.quantile(0.5) <= statistics.quantile(0.99));
    require(statistics.quantile(0.99) <= statistics.max());
    const auto& envelope = series.envelope;
    require(envelope.exact() || envelope.samples().empty());
    require(std::max(envelope.samples().size(), envelope.buckets().size()) <=
            runs::Envelope::usualCapacity);
  }
  for (const auto& source : run.sources)
    require(source.expected >= source.samples);
  for (const auto& process : run.processes)
    require(process.last >= process.first);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  static const auto& folder = *new ScratchFolder;
  if (size == 0) return 0;
  std::string_view content(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::vector<std::string> paths;
  for (std::size_t file = data[0]; !content.empty(); ++file) {
    const auto part = content.substr(0, content.find('\xFF'));
    const std::string prefix = prefixes[file % prefixes.size()];
    paths.push_back(folder.write(prefix + "profiler_x.txt", part));
    content.remove_prefix(std::min(content.size(), part.size() + 1));
  }
  const runs::Detail detail{
      .envelopes = true, .processEnvelopes = runs::Envelope::detailedCapacity, .moments = true};
  check(runs::readRun(folder.path(), {}, detail));
  check(runs::readRun(folder.path(), {.from = 1, .to = 3, .processes = {"1*", "[a"}}, detail));
  for (const auto& path : paths)
    std::filesystem::remove(path);
  return 0;
}
