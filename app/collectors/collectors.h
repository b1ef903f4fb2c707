#pragma once

// The collectors' thread functions, one per source. Each gets its own slot of the thread table,
// samples until the run ends and returns null. It does not end by pthread_exit(), which unwinds the
// stack: where the C library's unwinder is not the C++ library's, that crashes.

void* startCPUProfiling(void* slot);
void* startGPUProfiling(void* slot);
void* startDSPProfiling(void* slot);  ///< both DSPs; which one, the slot says
void* startDDRProfiling(void* slot);
void* startMEMProfiling(void* slot);
void* startPROCProfiling(void* slot);
void* startDISKProfiling(void* slot);
void* startPROCMEMProfiling(void* slot);
void* startNETProfiling(void* slot);
