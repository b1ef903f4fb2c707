#pragma once

/// Prints the usage text and ends the program with status 0.
[[noreturn]] void help(const char* programName);

/// Reads the command line into the run parameters and the slots, saying what it receives. Ends the
/// program for help, version, an unknown option (0) and a negative total time (-1). Tells whether
/// a suffix was given.
bool parseOptions(int argc, char** argv);

/// Gives the common sampling time to every slot without one of its own.
void update_default_sample_time();

/// Prints the parameters; -1 where a slot's sampling time is longer than the run.
int dump_parameters();
