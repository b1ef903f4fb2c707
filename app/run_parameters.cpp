#include "run_parameters.h"

int profilingTime = 20;
int samplingTime = 1000;
bool infiniteProfiling = false;
bool qtimerEnabled = false;
bool jsonFile = false;
bool csvFile = false;
bool liveProfiling = false;
bool pidListEnabled = false;

std::vector<int>& pidList = *new std::vector<int>;
std::string& filename = *new std::string;
std::string& logFolder = *new std::string;

DATAENDPOINT* dataEndpoint = nullptr;
