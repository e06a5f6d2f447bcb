// SoakRun: the bookkeeping and the verdict of the wall's soak run (--soak FRAMES).
//
// Before each wall frame it lets the SoakDriver act; it counts the frames, counts the GL errors
// the library logs (GLErrorLog) and writes the summary line. Memory is read twice, with the wall
// in the same state both times: after the first quarter of the frames (the warm-up) and at the
// end, the driver undoes what its actions left and the wall plays a few frames undisturbed
// (what a tile holds depends on its back-end and its source, so memory read in whatever state
// the actions left would compare states, not leaks). The run passes when no GL error was
// logged, every tile shows its camera on screen at the end (the wall's own picture check), and,
// in a build without AddressSanitizer (whose quarantine holds freed memory, so resident memory
// there says nothing), the process's memory grew by less than 2 MB between the two readings:
// its resident memory with the malloc heap counted by the bytes allocated in it. The heap's own
// resident pages are not a measure of what the process holds: glibc keeps pages that freed
// chunks left half empty, and how many depends on how the heap happens to be cut up (runs whose
// heap holds the same bytes at both readings differ by 1 to 25 MB of resident heap). So the run
// uses one malloc arena for every thread, which puts the whole heap in one place to count, and
// reports the plain resident figures beside the counted ones. It paints nothing and decides
// nothing about the tiles.
#pragma once

#include <wx/string.h>

#include "GLErrorLog.h"
#include "SoakDriver.h"

struct WallOptions;

class SoakRun {
 public:
  static constexpr long kMostGrowth = 2L * 1024 * 1024;

  explicit SoakRun(const WallOptions& options);

  // Before a wall frame: the operator's turn.
  void BeforeFrame(WallFrame& wall);
  // After a wall frame; true once the last one has run.
  bool AfterFrame();
  // The picture check of the last frame: whether every tile shows its camera, and which do not.
  void SetPicturesChecked(bool shown, const wxString& report);

  bool Passed() const;
  // One line: frames, pictures painted, actions by kind, resident memory after the warm-up and
  // at the end, GL errors, the verdict.
  wxString Summary(long long picturesPainted) const;

  // The memory of this process, in bytes, once the allocator has handed its free pages back:
  // all that is resident, the resident part of the malloc heap, and the bytes allocated in the
  // heap.
  struct Memory {
    long resident = 0;
    long heapResident = 0;
    long heapInUse = 0;
    // Resident memory with the heap counted by its bytes in use.
    long Held() const { return resident - heapResident + heapInUse; }
  };
  static Memory Measure();

 private:
  bool MemoryBounded() const;
  // Whether the frame about to run is one of the undisturbed frames before a reading.
  bool Settling() const;

  long m_frames;
  long m_warmUpFrames;
  long m_settleFrames;
  long m_done = 0;
  bool m_measuredAfterWarmUp = false;
  bool m_picturesShown = false;
  wxString m_pictureReport;
  unsigned long m_seed;
  Memory m_afterWarmUp;
  Memory m_atEnd;
  SoakDriver m_driver;
  GLErrorLog m_glErrors;
};
