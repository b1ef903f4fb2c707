#pragma once

namespace dsp {

/// Clock and load of one digital signal processor.
///
/// Kernel sources: `/sys/class/remoteproc/*` (which processor, whether it runs) and
/// `/sys/class/devfreq/*` (clock, load).
///
/// Not thread-safe: one object belongs to one thread; two objects may be used side by side.
class __attribute__((visibility("default"))) DSP_MON {
 public:
  /// `slot` selects the processor: 2 the audio DSP ("adsp"), 3 the compute DSP ("cdsp").
  /// `wait(slot)` is called once per sample to let one period pass; it returns 110 (ETIMEDOUT)
  /// when sampling goes on and anything else when it has to stop.
  DSP_MON(int slot, int (*wait)(int));
  ~DSP_MON();
  DSP_MON(const DSP_MON&) = delete;
  DSP_MON& operator=(const DSP_MON&) = delete;

  /// Blocks for one period through `wait`, then takes a sample. 0: a sample was taken (a DSP that
  /// is stopped is one: frequency 0, load 0). Anything else: stop, because `wait` said so, because
  /// the machine has no such processor (no period is waited then), or because it runs at a clock
  /// that cannot be read; the latter two are said once on standard error.
  int corvane_getDSPSample();

  long corvane_getDSPFrequency();     ///< Hz, of the last sample
  float corvane_getDSPUtilization();  ///< percent, 0 to 100; 0 where the kernel counts no load

 private:
  alignas(16) unsigned char opaque_[4096];
};

}  // namespace dsp
