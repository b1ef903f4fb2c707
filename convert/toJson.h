#pragma once

#include <string>
#include <vector>

#include "folder.h"
#include "sysip.h"

/// Converts the result files of the run folder `dir` (no "/" at its end) into
/// dir/ProfilerOutput.json, which a trace viewer opens. Returns -1 when that file cannot be made,
/// else 0. A malformed result file ends it by std::out_of_range or std::invalid_argument; all
/// events made so far are then in the file.
int jsonConvert(const Folder& dir);

/// Writes the frame of the trace file and converts every path that a result file's name is part
/// of. Always 0.
int parseFiles(const std::vector<FilePath>& files);

/// Adds one result file's events to the trace file. Returns -1 when `file` cannot be opened, else
/// 0, also when it holds no data. Throws as jsonConvert does.
int generateJson(const FilePath& file, SYSIP kind);

/// The text of an event that names the process `pid` of a track, with a comma in front of all but
/// the first one of the program. Tells what it names on standard output.
std::string createMetadata(std::string name, std::string ts, std::string pid, std::string tid,
                           std::string argName, std::string argValue);

/// The text of one sample of a counter, with a comma in front unless `separator` is 0. The texts
/// go in as they are: `ts`, `pid` and `tid` must be numbers.
std::string createCounterEvent(std::string name, std::string ts, std::string pid, std::string tid,
                               std::string key, std::string value, int separator);
