#include <algorithm>
#include <optional>

#include "gauge.h"
#include "gauge_rates.h"
#include "reading.h"
#include "steady_time.h"

namespace {

const std::string suppliesFolder = "/sys/class/power_supply/";
const std::string zonesFolder = "/sys/class/powercap/";
const std::string sensorsFolder = "/sys/class/hwmon/";

/// A value that the kernel hands out as it is.
struct Sensor {
  Attribute value;
  double scale;
};

/// A counter of µJ, which starts again at 0 beyond its range.
struct EnergyCounter {
  Attribute counter;
  std::uint64_t range = 0;  // 0: not known
  std::optional<std::uint64_t> before{};
};

/// The name of an energy zone with those above it: of two packages each has a "dram".
std::string zoneName(const std::string& entry) {
  auto own = readAttribute(zonesFolder + entry + "/name").value_or(entry);
  const auto colon = entry.rfind(':');
  if (colon == entry.find(':')) return own;
  return zoneName(entry.substr(0, colon)) + "/" + own;
}

class PowerGauge : public Gauge {
 public:
  PowerGauge() {
    addSupplies();
    addSensors();
    addEnergyCounters();
    time_ = steadyNow();
  }

  void sample(std::vector<double>& values) override {
    std::size_t i = 0;
    for (auto& sensor : sensors_)
      values[i++] = reading(sensor.value, sensor.scale);
    const auto now = steadyNow();
    const std::chrono::duration<double> passed = now - time_;
    time_ = now;
    for (auto& zone : energies_) {
      const auto energy = zone.counter.number();
      values[i++] = meanPower(zone.before, energy, zone.range, passed.count());
      zone.before = energy;
    }
  }

 private:
  void addSensor(const std::string& path, const std::string& name, const char* unit,
                 std::string_view number = "") {
    Attribute value(path);
    if (!value.text()) return;
    addColumn(name, unit, number);
    sensors_.push_back({std::move(value), 1e-6});
  }

  void addSupplies() {
    for (const auto& supply : listFolder(suppliesFolder)) {
      const auto folder = suppliesFolder + supply;
      addSensor(folder + "/current_now", supply + "_current", "A");
      addSensor(folder + "/voltage_now", supply + "_voltage", "V");
      addSensor(folder + "/power_now", supply + "_power", "W");
    }
  }

  void addSensors() {
    for (const auto& chip : listFolder(sensorsFolder)) {
      const auto folder = sensorsFolder + chip + "/";
      for (const auto& file : listFolder(folder)) {
        const auto sensor = file.substr(0, file.find('_'));
        const bool isInput = file == sensor + "_input";
        const bool isMean =
            file == sensor + "_average" && !readAttribute(folder + sensor + "_input");
        if (!sensor.starts_with("power") || (!isInput && !isMean)) continue;
        const auto label = readAttribute(folder + sensor + "_label").value_or(sensor);
        addSensor(folder + file,
                  readAttribute(folder + "name").value_or(chip).append("_").append(label), "W",
                  chip.substr(std::min(chip.size(), chip.find_first_of("0123456789"))));
      }
    }
  }

  void addEnergyCounters() {
    for (const auto& zone : listFolder(zonesFolder)) {
      Attribute counter(zonesFolder + zone + "/energy_uj");
      const auto energy = counter.number();
      if (!energy) continue;
      addColumn(zoneName(zone) + "_mean", "W", zone);
      Attribute range(zonesFolder + zone + "/max_energy_range_uj");
      energies_.push_back({std::move(counter), range.number().value_or(0), energy});
    }
  }

  std::vector<Sensor> sensors_;
  std::vector<EnergyCounter> energies_;
  SteadyTime time_;
};

}  // namespace

std::unique_ptr<Gauge> powerGauge() {
  return std::make_unique<PowerGauge>();
}
