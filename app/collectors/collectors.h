#pragma once

// The collectors' thread functions, one per source. Each gets its own slot of the thread table,
// samples until the run ends and returns null: returning is what ending the thread means here,
// since unwinding it would run into code that may not be unwound.

void* startCPUProfiling(void* slot);
void* startGPUProfiling(void* slot);
void* startDSPProfiling(void* slot);  ///< both DSPs; which one, the slot says
void* startDDRProfiling(void* slot);
void* startMEMProfiling(void* slot);
void* startPROCProfiling(void* slot);
void* startDISKProfiling(void* slot);
void* startPROCMEMProfiling(void* slot);
void* startNETProfiling(void* slot);
