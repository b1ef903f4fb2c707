#pragma once

/// The kinds of result files, in the order of the profiler slots. Any other int may be cast to it
/// and is a kind that nobody knows.
enum SYSIP : int {
  CPU_STATS = 0,
  GPU_STATS = 1,
  ADSP_STATS = 2,
  CDSP_STATS = 3,
  CDSP1_STATS = 4,
  DDR_STATS = 5,
  MEM_STATS = 6,
  PROC_STATS = 7,
  DISKIO_STATS = 8,
  PROCMEM_STATS = 9,
  NET_STATS = 10,
  THERMAL_STATS = 11,
};
