// ProcessUsage: getrusage, the per-thread clock and /proc/self.
#include "ProcessUsage.h"

#include <dirent.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>

namespace {

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

// One thread's name and processor seconds from /proc/self/task/<id>/stat; false if it is gone.
bool ReadThread(const std::string& id, std::string& name, double& seconds) {
  std::ifstream file("/proc/self/task/" + id + "/stat");
  std::string line;
  if (!std::getline(file, line)) return false;
  // "id (name) state ...": the name may hold spaces, so fields are counted after the last ')'.
  const size_t open = line.find('(');
  const size_t close = line.rfind(')');
  if (open == std::string::npos || close == std::string::npos) return false;
  name = line.substr(open + 1, close - open - 1);
  unsigned long long user = 0;
  unsigned long long system = 0;
  // After ')' come state (field 3) ... utime (14) and stime (15).
  if (std::sscanf(line.c_str() + close + 1,
                  " %*c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu", &user, &system) != 2) {
    return false;
  }
  seconds = static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
  return true;
}

}  // namespace

double ProcessCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

double ThreadCpuSeconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double DrawingCpuSeconds() {
  double total = ThreadCpuSeconds();
  const std::string self = std::to_string(syscall(SYS_gettid));
  const std::unique_ptr<DIR, int (*)(DIR*)> tasks(opendir("/proc/self/task"), closedir);
  if (!tasks) return total;
  while (const dirent* entry = readdir(tasks.get())) {
    const std::string id = entry->d_name;
    std::string name;
    double seconds = 0;
    if (id == self || !ReadThread(id, name, seconds)) continue;
    if (name.rfind("llvmpipe-", 0) == 0) total += seconds;
  }
  return total;
}

int64_t ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  long long pages = 0;
  long long resident = 0;
  file >> pages >> resident;
  return resident * static_cast<int64_t>(sysconf(_SC_PAGESIZE));
}

std::string MachineLoad() {
  double load = 0;
  std::ifstream("/proc/loadavg") >> load;
  char text[160];
  std::snprintf(text, sizeof(text), "load average %.2f", load);
  std::string result = text;
  std::ifstream pressure("/proc/pressure/cpu");
  std::string line;
  double waited = 0;
  if (std::getline(pressure, line) && std::sscanf(line.c_str(), "some avg10=%lf", &waited) == 1) {
    std::snprintf(text, sizeof(text), ", tasks waited for a processor %.0f %% of the last 10 s",
                  waited);
    result += text;
  }
  return result;
}
