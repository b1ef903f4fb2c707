#pragma once

#include <cstdint>
#include <pthread.h>

/// One source that can be sampled. The main thread fills it in before the collectors start.
struct ProfilerThread {
  std::uint8_t enabled = 0;              ///< asked for on the command line
  char name[23] = "";                    ///< NUL-terminated
  void* (*threadFunc)(void*) = nullptr;  ///< the collector; null: the slot cannot run
  int index = 0;                         ///< the slot's own number
  int sampleTime = 0;                    ///< ms; 0 and below: back to back
  pthread_t thread = {};
  pthread_cond_t cond = {};    ///< wakes the collector early
  pthread_mutex_t mutex = {};  ///< guards cond
};

/// A slot's number is the identity of its source throughout the system.
enum Slot : int {
  cpuSlot,
  gpuSlot,
  adspSlot,
  cdspSlot,
  cdsp1Slot,
  ddrSlot,
  memSlot,
  procSlot,
  diskSlot,
  procmemSlot,
  netSlot,
  spareSlot,
  slotCount
};

extern ProfilerThread profilerThreads[slotCount];

/// Starts the collectors of the enabled slots in their order; 0, or the first error, after which
/// no further one is started.
int startThreads();
/// Waits until every collector that was started has ended.
void waitThreads();
/// Wakes every collector that waits for its next sample.
void notifyThreadsExit();

/// Waits the slot's sampling time. 110 (ETIMEDOUT): go on sampling; anything else: stop. The
/// monitors that pace themselves get this function as their callback.
int cond_timedwait(int slot);
