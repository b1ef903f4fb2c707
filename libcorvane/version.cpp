#include "version.h"

#include <cstdio>

void printLibraryVersion() {
  std::puts("Corvane Library Version : v" CORVANE_LIBRARY_VERSION);
}
