#pragma once

/// Writes one line to standard output: the name and version of the monitor library
/// ("Corvane Library Version : v1.0.0"). Does not block, cannot fail.
__attribute__((visibility("default"))) void printLibraryVersion();
