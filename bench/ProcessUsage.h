// ProcessUsage: what this process costs the machine, read from the kernel: processor time of
// the whole process, of its GUI thread and of the GL rasteriser's threads, and its resident
// memory. The wall and peer benchmarks sample it before and after a run.
//
// Times count user plus system time. It knows nothing of other processes (the X server).
#pragma once

#include <cstdint>
#include <string>

// Processor seconds of every thread of the process so far.
double ProcessCpuSeconds();

// Processor seconds of the drawing side so far: the calling thread (the GUI thread, which
// also paints) and Mesa's rasteriser threads ("llvmpipe-N"), which shade for it.
double DrawingCpuSeconds();

// Processor seconds of the calling thread so far.
double ThreadCpuSeconds();

// Resident memory of the process, bytes.
int64_t ResidentBytes();

// How busy the machine is, for the record beside the figures: the load average over the last
// minute and, where the kernel reports it, the share of the last 10 s in which tasks waited
// for a processor (/proc/pressure/cpu).
std::string MachineLoad();
