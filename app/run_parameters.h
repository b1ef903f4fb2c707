#pragma once

#include <string>
#include <vector>

#include "dataendpoint.h"

// The run's parameters. The main thread writes them before it starts a collector; from then on they
// are only read, without locks. None is ever destroyed: a collector may be reading while another
// one ends the process.

extern int profilingTime;       ///< total run time in s; 0 = no limit
extern int samplingTime;        ///< ms, for every source without a time of its own
extern bool infiniteProfiling;  ///< no time limit
extern bool qtimerEnabled;      ///< stamp samples with the 19.2 MHz counter
extern bool jsonFile;           ///< convert to a trace after the run
extern bool csvFile;            ///< convert to CSV after the run
extern bool liveProfiling;      ///< hand every sample to the live report
extern bool pidListEnabled;     ///< per-process sources keep to pidList

extern std::vector<int>& pidList;
extern std::string& filename;   ///< suffix of the run folder and of every result file
extern std::string& logFolder;  ///< the run folder, relative to the working directory

extern DATAENDPOINT* dataEndpoint;  ///< the one live report
