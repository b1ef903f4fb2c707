#include "dataendpoint.h"

#include <algorithm>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <utility>

namespace {

/// One message, one write: the collectors print beside this.
void put(std::string_view text) {
  std::cout.write(text.data(), std::streamsize(text.size())).flush();
}

std::string line(const std::vector<std::string>& row, int mode) {
  std::ostringstream text;
  for (const auto& cell : row) {
    text << std::setw(20);
    if (mode == 1) {
      // What a library prints on std::cout from then on is to look like the row.
      std::cout << std::fixed << std::setprecision(2);
      text << std::fixed << std::setprecision(2) << std::atof(cell.c_str());
    } else {
      text << cell;
    }
  }
  text << '\n';
  return std::move(text).str();
}

std::string mebibytes(unsigned long long bytes) {
  return std::to_string(double(bytes) * 0x1p-20);
}

}  // namespace

DATAENDPOINT::DATAENDPOINT() : writeRow_(put) {
  put("Reached the constructor for dataendpoint.\n");
}

DATAENDPOINT::~DATAENDPOINT() {
  close();
  dataEndPoint.endpointMutex.unlock();
}

void DATAENDPOINT::close() {
  dataEndPoint.endpointMutex.lock();
  put("Datapoint : Entered the destructor.\n");
  std::fill_n(dataEndPoint.sampleReady, int(sourceCount), 0);
}

template <class Store>
int DATAENDPOINT::handOff(Source source, Store store) {
  const std::lock_guard lock(dataEndPoint.endpointMutex);
  if (dataEndPoint.headersPrinted == 0) {
    setHeaders();
    dataEndPoint.headersPrinted = 1;
  }
  store();
  dataEndPoint.sampleReady[source] = 1;
  printRowIfComplete();
  return 0;
}

int DATAENDPOINT::flushCPUSample(double load, int) {
  return handOff(CPU, [&] { dataEndPoint.cpuLoad = load; });
}

int DATAENDPOINT::flushGPUSample(unsigned long frequency, float utilization, int) {
  return handOff(GPU, [&] {
    dataEndPoint.gpuFrequency = frequency;
    dataEndPoint.gpuUtilization = utilization;
  });
}

int DATAENDPOINT::flushADSPSample(float load, long frequency, int) {
  return handOff(ADSP, [&] {
    dataEndPoint.adspLoad = load;
    dataEndPoint.adspFrequency = frequency;
  });
}

int DATAENDPOINT::flushCDSPSample(float load, long frequency, int) {
  return handOff(CDSP, [&] {
    dataEndPoint.cdspLoad = load;
    dataEndPoint.cdspFrequency = frequency;
  });
}

int DATAENDPOINT::flushDDRSample(int bandwidth, int) {
  return handOff(DDR, [&] { dataEndPoint.ddrBandwidth = bandwidth; });
}

int DATAENDPOINT::flushMEMSample(float usage, int) {
  return handOff(MEM, [&] { dataEndPoint.memUsage = usage; });
}

int DATAENDPOINT::flushNETSample(std::string interface, unsigned long long txBytes,
                                 unsigned long long rxBytes, int) {
  return handOff(NET, [&] {
    dataEndPoint.interfaceName = std::move(interface);
    dataEndPoint.netTxBytes = txBytes;
    dataEndPoint.netRxBytes = rxBytes;
  });
}

void DATAENDPOINT::printRowIfComplete() {
  dataEndPoint.rowReady = true;
  for (const Source source : {CPU, GPU, ADSP, CDSP, DDR, MEM, NET}) {
    if (dataEndPoint.sampleReady[source] == 0) dataEndPoint.rowReady = false;
  }
  if (!dataEndPoint.rowReady) return;
  setOutput();
  startNextRow();
}

/// All values are forgotten but the network's, which the next row may show once more.
void DATAENDPOINT::startNextRow() {
  dataEndPoint.cpuLoad = 0;
  dataEndPoint.gpuUtilization = 0;
  dataEndPoint.gpuFrequency = 0;
  dataEndPoint.adspFrequency = 0;
  dataEndPoint.adspLoad = 0;
  dataEndPoint.cdspFrequency = 0;
  dataEndPoint.cdspLoad = 0;
  dataEndPoint.cdsp1Frequency = 0;
  dataEndPoint.cdsp1Load = 0;
  dataEndPoint.ddrBandwidth = 0;
  dataEndPoint.memUsage = 0;
  for (int source = 0; source < sourceCount; ++source) {
    if (dataEndPoint.profilerEnabled[source] != 0) dataEndPoint.sampleReady[source] = 0;
  }
}

void DATAENDPOINT::setHeaders() {
  const std::pair<Source, const char*> columns[] = {
      {CPU, "CPU Load"},        {GPU, "GPU Utilization"}, {GPU, "GPU Freq(MHz)"},
      {ADSP, "ADSP Load"},      {ADSP, "ADSP Frequency"}, {CDSP, "CDSP Load"},
      {CDSP, "CDSP Frequency"}, {CDSP1, "CDSP1 Load"},    {CDSP1, "CDSP1 Frequency"},
      {DDR, "DDR BW Total"},    {MEM, "Memory Usage(%)"}, {NET, "Interface Name"},
      {NET, "Tx(MB)"},          {NET, "Rx(MB)"},
  };
  std::vector<std::string> row;
  for (const auto& [source, name] : columns) {
    if (enabled(source)) row.emplace_back(name);
  }
  printVector(row, 0);
}

void DATAENDPOINT::setOutput() {
  const auto& data = dataEndPoint;
  std::vector<std::string> row;
  const auto add = [&](Source source, auto... values) {
    if (enabled(source)) (row.push_back(std::to_string(values)), ...);
  };
  add(CPU, data.cpuLoad);
  add(GPU, data.gpuUtilization, data.gpuFrequency);
  add(ADSP, data.adspLoad, data.adspFrequency);
  add(CDSP, data.cdspLoad, data.cdspFrequency);
  add(CDSP1, data.cdsp1Load, data.cdsp1Frequency);
  add(DDR, data.ddrBandwidth);
  add(MEM, data.memUsage);
  if (!enabled(NET)) {
    writeRow_(line(row, 1));
    return;
  }
  row.insert(row.end(),
             {data.interfaceName, mebibytes(data.netTxBytes), mebibytes(data.netRxBytes)});
  writeRow_(line(row, 0));
}

void DATAENDPOINT::printVector(std::vector<std::string> row, int mode) {
  put(line(row, mode));
}
