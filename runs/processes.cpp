#include "processes.h"

#include <algorithm>
#include <tuple>

namespace runs {

namespace {

/// Marks the first `keep` by `rank` among those of which it is known.
template <class Known, class Rank>
void markTop(const std::vector<Process>& all, std::size_t keep, std::vector<bool>& marks,
             Known known, Rank rank) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (known(all[i])) order.push_back(i);
  }
  const auto before = [&](std::size_t a, std::size_t b) {
    // Of equals the earlier one, so that the choice does not hang on when it is made.
    return std::tuple(-rank(all[a]), all[a].first, all[a].pid) <
           std::tuple(-rank(all[b]), all[b].first, all[b].pid);
  };
  const auto count = std::min(keep, order.size());
  std::ranges::nth_element(order, order.begin() + std::ptrdiff_t(count), before);
  for (std::size_t i = 0; i < count; ++i)
    marks[order[i]] = true;
}

}  // namespace

void keepTop(std::vector<Process>& ended, std::size_t keep) {
  std::vector<bool> marks(ended.size());
  const auto hasCpu = [](const Process& process) { return process.cpu.count != 0; };
  const auto hasPss = [](const Process& process) { return process.pss.count != 0; };
  markTop(ended, keep, marks, hasCpu, [](const Process& process) { return process.cpuSeconds; });
  markTop(ended, keep, marks, hasPss, [](const Process& process) { return process.pss.peak; });
  markTop(ended, keep, marks, hasPss, [](const Process& process) { return process.pss.growth(); });
  std::size_t at = 0;
  std::erase_if(ended, [&](const Process&) { return !marks[at++]; });
}

}  // namespace runs
