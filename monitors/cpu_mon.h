#pragma once

namespace cpu {

/// Load and steal time of the processor cores.
///
/// Kernel source: `/proc/stat`. Usage is the share of the period's ticks in which a core was busy
/// (user, nice, system, irq, softirq; not idle, iowait or steal); steal is the share that a
/// hypervisor took. An offline core reads 0. All cores together are those that were online at both
/// ends of the period.
///
/// Not thread-safe: one object belongs to one thread. No method throws for a missing or
/// unreadable kernel file; that is said once on standard error and the values are 0.
class __attribute__((visibility("default"))) CPU_MON {
 public:
  /// Takes the first reading, so that the first sample covers its own period only.
  CPU_MON();
  ~CPU_MON();
  CPU_MON(const CPU_MON&) = delete;
  CPU_MON& operator=(const CPU_MON&) = delete;

  /// The period in milliseconds of the following samples. 0 and below: do not wait at all.
  void corvane_setSamplingTime(int milliseconds);

  /// Blocks until one period has passed since the last sample (a deadline that was missed is
  /// skipped) and returns `coreCount` + 1 percentages, 0 to 100: element 0 all cores together,
  /// element i + 1 core i. A total below -0.02 means: stop sampling. Valid until the next call.
  double* corvane_getPerCoreUsage();

  /// The same shape and units for the steal time of the sample that corvane_getPerCoreUsage took.
  /// Does not block. Valid until the next call.
  double* corvane_getPerCoreStealTime();

  /// Number of cores that can ever be online ("possible"); fixed for the life of the object.
  /// Programs read it in place: it is the first data member.
  int coreCount;

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace cpu
