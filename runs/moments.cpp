#include "moments.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace runs {

namespace {

void addUse(std::vector<Moments::Use>& uses, Moments::Use use) {
  const auto same = std::ranges::find_if(uses, [&](const Moments::Use& there) {
    return there.pid == use.pid && there.name == use.name;
  });
  if (same == uses.end()) {
    uses.push_back(std::move(use));
  } else {
    same->cpuSeconds += use.cpuSeconds;
    same->peak = std::max(same->peak, use.peak);
  }
}

void keepMost(Moments::Stretch& stretch) {
  auto& uses = stretch.uses;
  std::ranges::stable_sort(uses, std::greater{}, &Moments::Use::cpuSeconds);
  if (uses.size() <= Moments::kept) return;
  // A spike of one sample has its name in a long stretch, too.
  const auto highest = std::ranges::max_element(uses, {}, &Moments::Use::peak);
  const auto lastKept = uses.begin() + Moments::kept - 1;
  if (highest > lastKept) std::iter_swap(highest, lastKept);
  uses.resize(Moments::kept);
}

void addTo(Moments::Stretch& stretch, Moments::Stretch&& later) {
  stretch.end = std::max(stretch.end, later.end);
  stretch.seconds += later.seconds;
  for (auto& use : later.uses)
    addUse(stretch.uses, std::move(use));
}

}  // namespace

void Moments::candidate(const Candidate& process) {
  if (process.cpuSeconds <= 0) return;
  if (sample_.size() == kept) {
    if (process.cpuSeconds <= sample_.back().cpuSeconds) return;
    sample_.pop_back();
  }
  const auto behind =
      std::ranges::upper_bound(sample_, process.cpuSeconds, std::greater{}, &Candidate::cpuSeconds);
  sample_.insert(behind, process);
}

void Moments::endSample(double time, double period) {
  const auto microseconds = std::int64_t(std::llround(std::clamp(time, 0.0, 1e12) * 1e6));
  if (stretches_.empty()) first_ = microseconds >> shift_;
  while ((microseconds >> shift_) - first_ >= std::int64_t(capacity))
    halve();
  const auto place = std::size_t(std::max<std::int64_t>(0, (microseconds >> shift_) - first_));
  if (place >= stretches_.size()) stretches_.resize(place + 1);
  Stretch sample{.end = time, .seconds = period, .uses = {}};
  for (const auto& process : sample_) {
    const double peak = period > 0 ? process.cpuSeconds / period : 0;
    sample.uses.push_back({process.pid, std::string(process.name), process.cpuSeconds, peak});
  }
  addTo(stretches_[place], std::move(sample));
  keepMost(stretches_[place]);
  sample_.clear();
}

/// Doubles the width.
void Moments::halve() {
  const bool odd = (first_ & 1) != 0;
  std::vector<Stretch> wider((stretches_.size() + (odd ? 2 : 1)) / 2);
  for (std::size_t i = 0; i < stretches_.size(); ++i)
    addTo(wider[(i + (odd ? 1 : 0)) / 2], std::move(stretches_[i]));
  std::ranges::for_each(wider, keepMost);
  stretches_ = std::move(wider);
  first_ >>= 1;
  ++shift_;
}

}  // namespace runs
