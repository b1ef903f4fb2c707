#include "command_line.h"

int main(int argc, char** argv) {
  return runCommandLine(argc, argv);
}
