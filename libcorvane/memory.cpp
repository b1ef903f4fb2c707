#include "memory.h"

#include <algorithm>

#include "kernel_file.h"
#include "memory_mon.h"
#include "notice.h"
#include "opaque.h"
#include "text_scan.h"

namespace {

struct Field {
  std::string_view name;
  std::optional<std::uint64_t> MemoryAmounts::* amount;
};

constexpr Field fields[] = {
    {"MemTotal:", &MemoryAmounts::total},         {"MemFree:", &MemoryAmounts::free},
    {"MemAvailable:", &MemoryAmounts::available}, {"Buffers:", &MemoryAmounts::buffers},
    {"Cached:", &MemoryAmounts::cached},          {"SwapTotal:", &MemoryAmounts::swapTotal},
    {"SwapFree:", &MemoryAmounts::swapFree},
};

}  // namespace

MemoryAmounts parseMeminfo(std::string_view text) {
  MemoryAmounts amounts;
  std::string_view line;
  // What follows the swap is a third of the text in which nothing is looked for.
  while (!amounts.swapFree && nextLine(text, line)) {
    const auto name = nextWord(line);
    const auto* field = std::ranges::find(fields, name, &Field::name);
    if (field != std::end(fields)) amounts.*field->amount = nextNumber(line);
  }
  return amounts;
}

MemoryFigures memoryFigures(const MemoryAmounts& amounts) {
  const auto total = amounts.total.value_or(0);
  const auto reclaimable =
      amounts.free.value_or(0) + amounts.buffers.value_or(0) + amounts.cached.value_or(0);
  const auto available = std::min(total, amounts.available.value_or(reclaimable));
  const auto swapTotal = amounts.swapTotal.value_or(0);
  const auto swapFree = std::min(swapTotal, amounts.swapFree.value_or(0));
  return {total, available, total - available, swapTotal, swapFree, swapTotal - swapFree};
}

namespace memory {

namespace {

struct State {
  KernelFile meminfo{"/proc/meminfo"};
  MemoryFigures figures{};
};

}  // namespace

MEMORY_MON::MEMORY_MON() {
  attach(opaque_, new State);
}

MEMORY_MON::~MEMORY_MON() {
  delete &attached<State>(opaque_);
}

std::uint64_t* MEMORY_MON::corvane_getMemStats() {
  auto& state = attached<State>(opaque_);
  const auto text = state.meminfo.readOnce();
  if (!text) noticeOnce("no memory figures: /proc/meminfo cannot be read");
  state.figures = memoryFigures(parseMeminfo(text.value_or("")));
  return state.figures.data();
}

}  // namespace memory
