#include "version_report.h"

#include "console.h"
#include "version.h"

namespace {

void printCorvaneLibVersion() {
  printLibraryVersion();
}

void printCorvaneAppVersion() {
  say("Corvane Application Version Details : \n"
      "Corvane Application Version : v2.3.3\n"
      "Build Date : " __DATE__
      "\n"
      "Build Time : " __TIME__
      "\n"
      "Release Type : EXT\n");
}

}  // namespace

void printVersionReport() {
  say("\n");
  printCorvaneLibVersion();
  say("\n");
  printCorvaneAppVersion();
}
