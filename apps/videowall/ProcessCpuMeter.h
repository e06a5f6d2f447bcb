// ProcessCpuMeter: the CPU use of this process (all its threads) since the previous sample,
// in percent of one core, as the wall's status bar shows it.
//
// It reads the process's own resource usage; it knows nothing of other processes or cores.
#pragma once

#include <chrono>

class ProcessCpuMeter {
 public:
  ProcessCpuMeter();
  // Percent of one core used since the previous call (or since construction).
  double Sample();

 private:
  static double CpuSeconds();

  double m_cpu;
  std::chrono::steady_clock::time_point m_time;
};
