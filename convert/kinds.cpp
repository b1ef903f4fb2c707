#include "kinds.h"

#include <algorithm>
#include <array>

namespace {

// The keys go by position, also where a file's columns stand in another order: total before read
// and write for the DDR, and steal times of many cores as "frequency". Stored traces and what is
// built on them rely on it.
constexpr std::array cpuKeys{KeyFrom{.column = 1, .key = "load"},
                             KeyFrom{.column = 10, .key = "frequency"}};
constexpr std::array gpuKeys{KeyFrom{.column = 1, .key = "Frequency"},
                             KeyFrom{.column = 2, .key = "Utilization"}};
constexpr std::array dspKeys{
    KeyFrom{.column = 1, .key = "Frequency"}, KeyFrom{.column = 2, .key = "Load"},
    KeyFrom{.column = 3, .key = "HVX Utilization"}, KeyFrom{.column = 4, .key = "HMX Utilization"},
    KeyFrom{.column = 5, .key = ""}};
constexpr std::array ddrKeys{KeyFrom{.column = 1, .key = "LLCC Total"},
                             KeyFrom{.column = 2, .key = "LLCC Read"},
                             KeyFrom{.column = 3, .key = "LLCC Write"},
                             KeyFrom{.column = 4, .key = "CABO Total"},
                             KeyFrom{.column = 5, .key = "CABO Read"},
                             KeyFrom{.column = 6, .key = "CABO Write"},
                             KeyFrom{.column = 7, .key = ""}};
constexpr std::array thermalKeys{KeyFrom{.column = 1, .key = "Temp(deg C)"}};

constexpr std::array memValues{KeyOfField{.key = "  Mem Usage(%)", .field = 4}};
constexpr std::array procValues{KeyOfField{.key = " Total CPU%", .field = 6}};
constexpr std::array diskValues{KeyOfField{.key = "  KB_read/s", .field = 3},
                                KeyOfField{.key = "  KB_write/s", .field = 5}};
constexpr std::array procmemValues{
    KeyOfField{.key = " VSS", .field = 4}, KeyOfField{.key = " PSS", .field = 5},
    KeyOfField{.key = " RSS", .field = 6}, KeyOfField{.key = " USS", .field = 7}};
constexpr std::array netValues{KeyOfField{.key = "Tx_bw(MB)", .field = 3},
                               KeyOfField{.key = "Rx_bw(MB)", .field = 4}};

constexpr std::array<Kind, 12> kinds{{
    {.id = CPU_STATS,
     .fileName = "cpuprofiler",
     .name = "CPU",
     .pid = "10",
     .metadataTid = "12",
     .events = ColumnEvents{.keys = cpuKeys, .namedByHeader = true},
     .summaries = &cpuSummaries},
    {.id = GPU_STATS,
     .fileName = "gpuprofiler",
     .name = "GPU",
     .pid = "11",
     .metadataTid = "5",
     .events = ColumnEvents{.keys = gpuKeys},
     .summaryPrefix = "GPU ",
     .summaries = &gpuSummaries},
    {.id = ADSP_STATS,
     .fileName = "adspprofiler",
     .name = "ADSP",
     .pid = "12",
     .metadataTid = "5",
     .events = ColumnEvents{.keys = dspKeys},
     .summaryPrefix = "ADSP ",
     .summaries = &adspSummaries},
    {.id = CDSP_STATS,
     .fileName = "cdspprofiler",
     .name = "CDSP",
     .pid = "13",
     .metadataTid = "5",
     .events = ColumnEvents{.keys = dspKeys},
     .summaryPrefix = "CDSP ",
     .summaries = &cdspSummaries},
    {.id = CDSP1_STATS,
     .fileName = "cdsp1profiler",
     .name = "CDSP1",
     .pid = "14",
     .metadataTid = "5",
     .events = ColumnEvents{.keys = dspKeys}},
    {.id = DDR_STATS,
     .fileName = "ddrprofiler",
     .name = "DDR",
     .pid = "15",
     .metadataTid = "8",
     .metadataEchoed = true,
     .events = ColumnEvents{.keys = ddrKeys},
     .summaryPrefix = "DDR ",
     .summaries = &ddrSummaries},
    {.id = MEM_STATS,
     .fileName = "memprofiler",
     .name = "MEM",
     .pid = "16",
     .metadataTid = "0",
     .metadataEchoed = true,
     .events = RowEvents{.values = memValues},
     .summaryPrefix = "MEM ",
     .summaries = &memSummaries},
    {.id = PROC_STATS,
     .fileName = "procprofiler",
     .name = "PROC",
     .pid = "17",
     .metadataTid = "0",
     .metadataEchoed = true,
     .events = RowEvents{.values = procValues, .nameField = 2, .track = Track::process}},
    {.id = DISKIO_STATS,
     .fileName = "diskioprofiler",
     .name = "DISKIO",
     .pid = "18",
     .metadataTid = "0",
     .metadataEchoed = true,
     .events = RowEvents{.values = diskValues, .nameField = 1, .track = Track::hashOfName},
     .summaryPrefix = "Diskio ",
     .summaries = &diskioSummaries},
    {.id = THERMAL_STATS,
     .fileName = "thermalprofiler",
     .name = "THERMAL",
     .pid = "19",
     .metadataTid = "0",
     .metadataEchoed = true,
     .traceNotice = "Thermal file processing now.",
     .events = ColumnEvents{.keys = thermalKeys, .namedByHeader = true}},
    {.id = PROCMEM_STATS,
     .fileName = "procmem-profiler",
     .name = "PROCMEM",
     .pid = "20",
     .metadataTid = "0",
     .metadataEchoed = true,
     .events = RowEvents{.values = procmemValues, .nameField = 3, .track = Track::process}},
    {.id = NET_STATS,
     .fileName = "netprofiler",
     .name = "NET",
     .pid = "21",
     .metadataTid = "12",
     .metadataEchoed = true,
     .traceNotice = "Net file processing now.",
     .events = RowEvents{.values = netValues, .nameField = 1, .bytesToMb = true}},
}};

}  // namespace

const std::span<const Kind> allKinds = kinds;

const Kind* findKind(SYSIP id) {
  const auto found = std::ranges::find(kinds, id, &Kind::id);
  return found == kinds.end() ? nullptr : &*found;
}

std::string announcement(const Kind& kind) {
  return "Calling the " + std::string(kind.name) + " profiler parser";
}
