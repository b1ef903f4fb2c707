#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace runs {

/// Stamps are written as microseconds of a counter of this rate, whatever its real one.
inline constexpr double nominalMhz = 19.2;

/// One moment on three clocks that were read one right after the other.
struct Instant {
  std::int64_t wallNs = 0;    ///< ns since 1970 in UTC
  int zoneSeconds = 0;        ///< the local zone, s east of UTC
  double boot = 0;            ///< s since boot, time in suspend included
  std::uint64_t counter = 0;  ///< ticks of the counter that stamps samples

  /// 2026-11-23T16:26:09.123456789+00:00; empty where the clock is not known.
  std::string wallTime() const;
};

/// Something that the user said during the recording.
struct Mark {
  Instant at;
  std::string text;
};

struct SourcePeriod {
  std::string source;  ///< its word: cpu, gpu, ... thermal
  int milliseconds = 0;
};

/// A source that was left out, and why.
struct MissingSource {
  std::string source, reason;
};

/// Cores of one kind.
struct Processor {
  std::string name;
  std::string cores;  ///< as the kernel lists them: "0-3,6"
};

/// How fast some cores may run.
struct FrequencyPolicy {
  std::string cores, governor;
  std::uint64_t minKhz = 0, maxKhz = 0;  ///< 0: the kernel does not say
};

/// What was measured on.
struct Host {
  std::string name, model, kernel, architecture;
  int cores = 0;  ///< that can ever be online
  std::string onlineCores;
  std::vector<Processor> processors;
  std::vector<FrequencyPolicy> frequencies;
  long pageSize = 0;
  std::uint64_t memoryKb = 0;
  std::map<std::string, std::string> android;  ///< properties that name build and device
};

/// How a process ended: one of the two, or neither while it runs.
struct Ending {
  std::optional<int> status{}, signal{};

  bool isOver() const { return status || signal; }
};

/// The command that was recorded.
struct Command {
  std::vector<std::string> arguments;
  int pid = 0;
  Ending ending;
  std::optional<Instant> start{}, end{};
};

/// The profiler that recorded.
struct Profiler {
  std::string path;
  std::vector<std::string> arguments;
  std::string version, monitorLibrary;  ///< "v2.3.3"; the line in which the library names itself
  Ending ending;
};

/// What is known of a run beside its samples: `<suffix>.run.json` beside the run folder.
struct Metadata {
  std::string suffix;
  Host host;
  Profiler profiler;
  std::vector<SourcePeriod> sources;
  std::vector<MissingSource> missing;
  std::optional<double> limit;  ///< s that the run was to last at most
  std::optional<Command> command;
  Instant start;
  std::optional<Instant> end;     ///< none: still recorded, or cut off
  double counterHz = 19'200'000;  ///< rate of Instant::counter
  std::map<std::string, std::string> labels;
  std::vector<Mark> marks;
  std::vector<std::string> notices;  ///< what could not be measured, as the library said it
  std::vector<std::string> faults;   ///< what went wrong with the recording itself

  /// Seconds of the run at a stamp of its files (µs of a counter of nominalMhz).
  double secondsAt(double stamp) const;
  /// Wall-clock time in s since 1970 at that stamp, by the clock as it was set at the start.
  double wallAt(double stamp) const;
};

/// The file that holds the metadata of the run in `folder`.
std::filesystem::path metadataFile(const std::filesystem::path& folder);

/// Nothing where there is no such file or it is none of ours; members that are not known are
/// passed over, those that lack keep their defaults.
std::optional<Metadata> readMetadata(const std::filesystem::path& folder);

std::optional<Metadata> parseMetadata(std::string_view json);
/// Always valid JSON: bytes that are no UTF-8 become U+FFFD.
std::string toJson(Metadata metadata);

}  // namespace runs
