#include <optional>

#include "gauge.h"
#include "gauge_rates.h"
#include "kernel_file.h"
#include "steady_time.h"
#include "text_scan.h"

namespace {

const std::string pressureFolder = "/proc/pressure/";

/// µs in which some or all tasks that could run had to wait, from the line of that word.
std::optional<std::uint64_t> waited(std::string_view text, std::string_view word) {
  std::string_view line;
  while (nextLine(text, line)) {
    if (nextWord(line) != word) continue;
    for (auto field = nextWord(line); !field.empty(); field = nextWord(line))
      if (field.starts_with("total=")) return toNumber(field.substr(6));
  }
  return std::nullopt;
}

struct Resource {
  KernelFile file;
  std::vector<std::string> words;  // "some", "full": those that it has
  std::vector<std::optional<std::uint64_t>> before;
};

class PressureGauge : public Gauge {
 public:
  PressureGauge() {
    for (const auto& name : listFolder(pressureFolder)) {
      Resource resource{
          .file = KernelFile((pressureFolder + name).c_str()), .words = {}, .before = {}};
      const auto text = resource.file.isOpen() ? resource.file.readOnce() : std::nullopt;
      for (const auto* word : {"some", "full"}) {
        const auto total = waited(text.value_or(""), word);
        if (!total) continue;
        addColumn(name + "_" + word, "%", "");
        resource.words.emplace_back(word);
        resource.before.emplace_back(total);
      }
      resources_.push_back(std::move(resource));
    }
    time_ = steadyNow();
  }

  void sample(std::vector<double>& values) override {
    const auto now = steadyNow();
    const std::chrono::duration<double> passed = now - time_;
    time_ = now;
    std::size_t i = 0;
    for (auto& resource : resources_) {
      const auto text = resource.file.isOpen() ? resource.file.readOnce() : std::nullopt;
      for (std::size_t w = 0; w < resource.words.size(); ++w) {
        const auto total = text ? waited(*text, resource.words[w]) : std::nullopt;
        values[i++] = shareOfTime(resource.before[w], total, passed.count());
        resource.before[w] = total;
      }
    }
  }

 private:
  std::vector<Resource> resources_;
  SteadyTime time_;
};

}  // namespace

std::unique_ptr<Gauge> pressureGauge() {
  return std::make_unique<PressureGauge>();
}
