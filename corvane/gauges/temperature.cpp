#include "gauge.h"
#include "reading.h"

namespace {

constexpr const char* zonesFolder = "/sys/class/thermal/";
constexpr std::string_view zonePrefix = "thermal_zone";

class TemperatureGauge : public Gauge {
 public:
  TemperatureGauge() {
    for (const auto& entry : listFolder(zonesFolder)) {
      if (!entry.starts_with(zonePrefix)) continue;
      Attribute degrees(zonesFolder + entry + "/temp");
      if (!degrees.text()) continue;
      const auto number = std::string_view(entry).substr(zonePrefix.size());
      addColumn(readAttribute(zonesFolder + entry + "/type").value_or(entry), "C", number);
      zones_.push_back(std::move(degrees));
    }
  }

  void sample(std::vector<double>& values) override {
    for (std::size_t i = 0; i < zones_.size(); ++i)
      values[i] = reading(zones_[i], 1e-3);
  }

 private:
  std::vector<Attribute> zones_;
};

}  // namespace

std::unique_ptr<Gauge> temperatureGauge() {
  return std::make_unique<TemperatureGauge>();
}
