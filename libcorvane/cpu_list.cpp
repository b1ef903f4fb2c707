#include "cpu_list.h"

#include "text_scan.h"

std::vector<int> parseCpuList(std::string_view text) {
  constexpr int mostCpus = 1 << 16;
  std::vector<int> cpus;
  while (!text.empty()) {
    const auto range = text.substr(0, text.find(','));
    text.remove_prefix(range.size() < text.size() ? range.size() + 1 : text.size());
    const auto dash = range.find('-');
    const auto first = toNumber<int>(range.substr(0, dash));
    const auto last = dash == range.npos ? first : toNumber<int>(range.substr(dash + 1));
    if (!first || !last || *first < 0 || *last >= mostCpus) break;
    for (int cpu = *first; cpu <= *last; ++cpu)
      cpus.push_back(cpu);
  }
  return cpus;
}
