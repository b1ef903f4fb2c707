#pragma once

/// Prints the versions of the monitor library and of the program.
void printVersionReport();
