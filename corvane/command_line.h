#pragma once

/// Takes the command line apart and runs the subcommand; returns the exit status.
int runCommandLine(int argc, char** argv);
