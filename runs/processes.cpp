#include "processes.h"

#include <algorithm>
#include <tuple>

namespace runs {

namespace {

/// Samples and buckets of all series of processes and names together: some 12 MB.
constexpr std::size_t mostHeld = 500'000;

/// How many keep detail in each respect.
constexpr std::size_t detailed = 40;

/// Marks the first `keep` by `rank` among those of which it is known.
template <class Known, class Rank>
void markTop(const std::vector<Process*>& all, std::size_t keep, std::vector<bool>& marks,
             Known known, Rank rank) {
  std::vector<std::size_t> order;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (known(*all[i])) order.push_back(i);
  }
  const auto before = [&](std::size_t a, std::size_t b) {
    // Of equals the earlier one, so that the choice does not hang on when it is made.
    return std::tuple(-rank(*all[a]), all[a]->first, all[a]->pid) <
           std::tuple(-rank(*all[b]), all[b]->first, all[b]->pid);
  };
  const auto count = std::min(keep, order.size());
  std::ranges::nth_element(order, order.begin() + std::ptrdiff_t(count), before);
  for (std::size_t i = 0; i < count; ++i)
    marks[order[i]] = true;
}

template <class ProcessorTime>
std::vector<bool> topOf(const std::vector<Process*>& all, std::size_t keep, ProcessorTime cpu) {
  std::vector<bool> marks(all.size());
  const auto hasCpu = [](const Process& process) { return process.cpu.count != 0; };
  const auto hasPss = [](const Process& process) { return process.pss.count != 0; };
  markTop(all, keep, marks, hasCpu, cpu);
  markTop(all, keep, marks, hasPss, [](const Process& process) { return process.pss.peak; });
  markTop(all, keep, marks, hasPss, [](const Process& process) { return process.pss.growth(); });
  return marks;
}

}  // namespace

std::vector<Process*> eachOf(std::vector<Process>& processes) {
  std::vector<Process*> all(processes.size());
  std::ranges::transform(processes, all.begin(), [](Process& process) { return &process; });
  return all;
}

void keepTop(std::vector<Process>& ended, std::size_t keep) {
  const auto cpu = [](const Process& process) { return process.cpuSeconds; };
  const auto marks = topOf(eachOf(ended), keep, cpu);
  std::size_t at = 0;
  std::erase_if(ended, [&](const Process&) { return !marks[at++]; });
}

void coarsenAllButTop(const std::vector<Process*>& all) {
  std::size_t held = 0;
  for (const auto* const process : all)
    held += process->cpuEnvelope.size() + process->pssEnvelope.size();
  if (held <= mostHeld) return;
  // The processor time of a name is known once its processes have ended.
  const auto cpu = [](const Process& process) { return process.cpu.sum; };
  const auto marks = topOf(all, detailed, cpu);
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (marks[i]) continue;
    all[i]->cpuEnvelope.coarsen(Envelope::smallCapacity);
    all[i]->pssEnvelope.coarsen(Envelope::smallCapacity);
  }
}

}  // namespace runs
