#pragma once

#include "metadata.h"

/// What is known of this machine; what the kernel does not tell stays empty.
runs::Host describeHost();
