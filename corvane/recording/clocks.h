#pragma once

#include "metadata.h"

/// This moment on all clocks.
runs::Instant instantNow();

/// Ticks a second of the counter that stamps samples.
double counterHz();
