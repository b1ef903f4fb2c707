#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

/// What the kernel says of one digital signal processor at one moment.
struct DspReading {
  std::optional<bool> running;         ///< the state of its remote processor
  std::optional<std::uint64_t> hertz;  ///< its clock
  std::optional<double> load;          ///< percent
};

struct DspSample {
  long frequency = 0;  ///< Hz
  float load = 0;      ///< percent
};

/// A processor that is stopped has no clock and no load. Nothing where it is not there, or where it
/// runs at a clock that cannot be read: 0 Hz would say that it is stopped.
std::optional<DspSample> dspSample(const DspReading& reading);

/// Whether a remote processor is at work, by its "state".
bool isRunning(std::string_view state);

/// Whether `word` stands in `text` with nothing alphanumeric beside it: "cdsp" in "cdsp.mbn", not
/// in "cdsp1".
bool holdsWord(std::string_view text, std::string_view word);
