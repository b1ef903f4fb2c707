#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "gauge.h"

/// A gauge's result file in the form of the profiler's files: fields right-aligned, the first one
/// the sample's time by the counter that `--qtimer` stamps with. The file is made with the first
/// sample's header; one that takes no more (disk full) keeps its complete lines, said once.
class GaugeFile {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// `folder` is the run folder's descriptor, `now` when its first period begins. A file of that
  /// name must not be there yet.
  GaugeFile(std::unique_ptr<Gauge> gauge, int folder, const std::string& name,
            std::chrono::milliseconds period, Time now);
  ~GaugeFile();
  GaugeFile(const GaugeFile&) = delete;
  GaugeFile& operator=(const GaugeFile&) = delete;

  Time due() const { return due_; }
  /// Why it takes no more; empty while it does.
  const std::string& fault() const { return fault_; }
  /// Takes the sample that is due and skips those that were missed.
  void sample();

 private:
  void addField(std::string_view text, std::size_t column);
  void write();
  void giveUp(const std::string& reason);

  std::unique_ptr<Gauge> gauge_;
  std::string name_;
  std::chrono::milliseconds period_;
  Time due_;
  int fd_ = -1;
  std::size_t written_ = 0;  ///< bytes of the file, all complete lines
  std::string line_, fault_;
  std::vector<double> values_;
};
