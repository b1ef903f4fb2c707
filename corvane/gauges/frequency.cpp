#include "cpu_list.h"
#include "gauge.h"
#include "reading.h"

namespace {

const std::string coresFolder = "/sys/devices/system/cpu/";

class FrequencyGauge : public Gauge {
 public:
  FrequencyGauge() {
    bool any = false;
    for (const int core : parseCpuList(readAttribute(coresFolder + "present").value_or(""))) {
      const auto name = "cpu" + std::to_string(core);
      any |= add(name, "", "/cpufreq/scaling_cur_freq");
      add(name, "min", "/cpufreq/scaling_min_freq");
      add(name, "max", "/cpufreq/scaling_max_freq");
    }
    // A core that is offline has no files and may come back; that none has them is another matter.
    if (!any) columns_.clear();
  }

  void sample(std::vector<double>& values) override {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      auto& [path, value] = clocks_[i];
      if (!value.exists()) value = Attribute(path);
      values[i] = reading(value, 1e-3);
    }
  }

 private:
  bool add(const std::string& core, const char* which, const char* file) {
    addColumn(core + which, "MHz", "");
    const auto path = coresFolder + core + file;
    return clocks_.emplace_back(path, Attribute(path)).value.exists();
  }

  /// With its path, since that of a core that was offline at the start is not there yet.
  struct Clock {
    std::string path;
    Attribute value;
    Clock(std::string itsPath, Attribute itsValue)
        : path(std::move(itsPath)), value(std::move(itsValue)) {}
  };
  std::vector<Clock> clocks_;
};

}  // namespace

std::unique_ptr<Gauge> frequencyGauge() {
  return std::make_unique<FrequencyGauge>();
}
