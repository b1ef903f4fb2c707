#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

/// The live report: gathers the newest value of every enabled source and prints one console row as
/// soon as each of them has delivered since the row before. Hand-offs come from any thread and
/// block for one another; everything else is called while no collector runs, or where it says so.
class DATAENDPOINT {
 public:
  DATAENDPOINT();
  ~DATAENDPOINT();
  DATAENDPOINT(const DATAENDPOINT&) = delete;
  DATAENDPOINT& operator=(const DATAENDPOINT&) = delete;

  /// Rows go to `write`, which may leave one out, in place of std::cout.
  void writeRowsBy(void (*write)(std::string_view row)) { writeRow_ = write; }

  // A source that is off is marked as having a sample, for good, so that it holds no row back.
  void setCPUSample() { dataEndPoint.sampleReady[CPU] = 1; }
  void setGPUSample() { dataEndPoint.sampleReady[GPU] = 1; }
  void setADSPSample() { dataEndPoint.sampleReady[ADSP] = 1; }
  void setCDSPSample() { dataEndPoint.sampleReady[CDSP] = 1; }
  void setDDRSample() { dataEndPoint.sampleReady[DDR] = 1; }
  void setMEMSample() { dataEndPoint.sampleReady[MEM] = 1; }
  void setNETSample() { dataEndPoint.sampleReady[NET] = 1; }

  // A source that is on gets its columns.
  void setCPUProfiler() { dataEndPoint.profilerEnabled[CPU] = 1; }
  void setGPUProfiler() { dataEndPoint.profilerEnabled[GPU] = 1; }
  void setADSPProfiler() { dataEndPoint.profilerEnabled[ADSP] = 1; }
  void setCDSPProfiler() { dataEndPoint.profilerEnabled[CDSP] = 1; }
  void setDDRProfiler() { dataEndPoint.profilerEnabled[DDR] = 1; }
  void setMEMProfiler() { dataEndPoint.profilerEnabled[MEM] = 1; }
  void setNETProfiler() { dataEndPoint.profilerEnabled[NET] = 1; }

  // The collectors' hand-offs. Each stores its values, prints the row that is thereby complete and
  // returns 0; the last argument has no meaning.
  int flushCPUSample(double load, int);                                 ///< percent
  int flushGPUSample(unsigned long frequency, float utilization, int);  ///< MHz, percent
  int flushADSPSample(float load, long frequency, int);                 ///< percent, Hz
  int flushCDSPSample(float load, long frequency, int);                 ///< percent, Hz
  int flushDDRSample(int bandwidth, int);                               ///< MB/s
  int flushMEMSample(float usage, int);                                 ///< percent
  int flushNETSample(std::string interface, unsigned long long txBytes, unsigned long long rxBytes,
                     int);

  /// Prints the header row; may be called beside hand-offs.
  void setHeaders();
  /// Prints the row of the newest values.
  void setOutput();
  /// Prints one row; mode 1 reads the texts as numbers and prints them with two decimals, which
  /// std::cout then has, too.
  void printVector(std::vector<std::string> row, int mode);

  /// For a process that is about to end under its collectors: says that the report ends and shuts
  /// every later hand-off out, for good.
  void close();

 private:
  enum Source { CPU, GPU, ADSP, CDSP, CDSP1, DDR, MEM, NET, sourceCount };

  struct {
    double cpuLoad = 0;
    float gpuUtilization = 0;
    unsigned long gpuFrequency = 0;
    long adspFrequency = 0;
    float adspLoad = 0;
    long cdspFrequency = 0;
    float cdspLoad = 0;
    long cdsp1Frequency = 0;
    float cdsp1Load = 0;
    long ddrBandwidth = 0;
    float memUsage = 0;
    unsigned long long netTxBytes = 0;
    unsigned long long netRxBytes = 0;
    std::string interfaceName;
    int sampleReady[sourceCount] = {};
    std::mutex endpointMutex;
    bool rowReady = false;
    int profilerEnabled[sourceCount] = {};
    int headersPrinted = 0;
  } dataEndPoint;

  void (*writeRow_)(std::string_view row);

  bool enabled(Source source) const { return dataEndPoint.profilerEnabled[source] != 0; }

  template <class Store>
  int handOff(Source source, Store store);
  void printRowIfComplete();
  void startNextRow();
};
