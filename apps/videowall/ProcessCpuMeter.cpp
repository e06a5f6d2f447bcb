// ProcessCpuMeter: user plus system time over wall time.
#include "ProcessCpuMeter.h"

#include <sys/resource.h>

ProcessCpuMeter::ProcessCpuMeter()
    : m_cpu(CpuSeconds()), m_time(std::chrono::steady_clock::now()) {}

double ProcessCpuMeter::Sample() {
  const double cpu = CpuSeconds();
  const auto now = std::chrono::steady_clock::now();
  const double wall = std::chrono::duration<double>(now - m_time).count();
  const double percent = wall > 0 ? (cpu - m_cpu) / wall * 100.0 : 0.0;
  m_cpu = cpu;
  m_time = now;
  return percent;
}

double ProcessCpuMeter::CpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& t) { return t.tv_sec + t.tv_usec / 1e6; };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}
