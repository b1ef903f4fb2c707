#pragma once

#include <string>

#include "folder.h"

/// The local time as 2025-01-31.09:05:07.
std::string getCurrentTime();

/// Makes the base folder and, below it, the run folder named by the run's suffix, and sets
/// `logFolder`. Says what came of it; nothing stops the run here, a folder that is missing shows up
/// when a collector cannot open its file.
void setupDirectoryStructure();

/// The run folder, held since setupDirectoryStructure() made or found it.
const Folder& runFolder();
