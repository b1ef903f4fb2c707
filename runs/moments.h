#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace runs {

/// Which processes used the processors when: the few with most processor time in each stretch of
/// the run, and the one with the highest single sample in it, kept whether or not they belong to
/// the first of the whole run. Stretches double their width when they become too many, as an
/// envelope's buckets do.
class Moments {
 public:
  static constexpr std::size_t capacity = 1024;
  /// Of a sample's processes those with most use, and of a stretch's.
  static constexpr std::size_t kept = 8;

  struct Use {
    int pid;
    std::string name;
    double cpuSeconds;  // in the stretch
    double peak;        // of its samples: seconds of processor time a second
  };
  struct Stretch {
    double end = 0;         // of its last sample, seconds of the run
    double seconds = 0;     // of all its samples together; 0: no sample
    std::vector<Use> uses;  // most first
  };
  /// What a sample says of one process.
  struct Candidate {
    int pid;
    std::string_view name;
    double cpuSeconds;
  };

  /// A process of the sample that is being read.
  void candidate(const Candidate& process);
  /// The end of a sample of so many seconds, which is not earlier than the one before.
  void endSample(double time, double period);

  double stretchSeconds() const { return double(std::int64_t{1} << shift_) / 1e6; }
  const std::vector<Stretch>& stretches() const { return stretches_; }

 private:
  void halve();

  unsigned shift_ = 0;
  std::int64_t first_ = 0;
  std::vector<Candidate> sample_;
  std::vector<Stretch> stretches_;
};

}  // namespace runs
