// SoakRun: frames, memory, GL errors and the verdict.
#include "SoakRun.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

#include <malloc.h>

#include "WallFrame.h"
#include "WallOptions.h"

namespace {

constexpr long kMostSettleFrames = 100;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kResidentMemoryMeaningful = false;
#else
constexpr bool kResidentMemoryMeaningful = true;
#endif

double Megabytes(long bytes) { return static_cast<double>(bytes) / (1024.0 * 1024.0); }

}  // namespace

// Before any tile's worker starts: threads that exist by then (the toolkit's own) keep the
// arenas they have.
SoakRun::SoakRun(const WallOptions& options)
    : m_frames(options.soakFrames),
      m_warmUpFrames(options.soakFrames / 4),
      m_settleFrames(std::min(kMostSettleFrames, options.soakFrames / 20)),
      m_seed(options.seed),
      m_driver(options.seed, options.layout.TileCount(), options.geometry.GetSize()) {
  mallopt(M_ARENA_MAX, 1);
}

bool SoakRun::Settling() const {
  const long warmedUp = m_warmUpFrames + m_settleFrames;
  return (m_done >= m_warmUpFrames && m_done < warmedUp) || m_done >= m_frames - m_settleFrames;
}

void SoakRun::BeforeFrame(WallFrame& wall) {
  if (m_done == m_warmUpFrames || m_done == m_frames - m_settleFrames) m_driver.Restore(wall);
  if (Settling()) return;
  if (const std::optional<SoakStep> step = m_driver.Choose()) m_driver.Apply(*step, wall);
}

bool SoakRun::AfterFrame() {
  ++m_done;
  if (m_done == m_warmUpFrames + m_settleFrames) {
    m_afterWarmUp = Measure();
    m_measuredAfterWarmUp = true;
  }
  if (m_done < m_frames) return false;
  m_atEnd = Measure();
  if (!m_measuredAfterWarmUp) m_afterWarmUp = m_atEnd;
  return true;
}

void SoakRun::SetPicturesChecked(bool shown, const wxString& report) {
  m_picturesShown = shown;
  m_pictureReport = report;
}

bool SoakRun::MemoryBounded() const {
  return !kResidentMemoryMeaningful || m_atEnd.Held() - m_afterWarmUp.Held() < kMostGrowth;
}

bool SoakRun::Passed() const {
  return m_glErrors.Count() == 0 && m_picturesShown && MemoryBounded();
}

wxString SoakRun::Summary(long long picturesPainted) const {
  wxString actions;
  for (int i = 0; i < kSoakActionCount; ++i) {
    const auto action = static_cast<SoakAction>(i);
    actions << (i ? ", " : "") << SoakDriver::Name(action) << " " << m_driver.Taken(action);
  }
  wxString line = wxString::Format(
      "videowall: soak seed %lu: %ld frames, %lld pictures painted, %lld actions (%s); with the "
      "wall restored, after %ld frames and at the end: memory held %.1f MB and %.1f MB (%+.1f MB, "
      "%s), resident %.1f MB and %.1f MB (%+.1f MB), heap in use %.1f MB and %.1f MB; %lld GL "
      "errors; %s: %s",
      m_seed, m_done, picturesPainted, m_driver.Total(), actions, m_warmUpFrames + m_settleFrames,
      Megabytes(m_afterWarmUp.Held()), Megabytes(m_atEnd.Held()),
      Megabytes(m_atEnd.Held() - m_afterWarmUp.Held()),
      kResidentMemoryMeaningful ? "limit 2 MB" : "not bounded under AddressSanitizer",
      Megabytes(m_afterWarmUp.resident), Megabytes(m_atEnd.resident),
      Megabytes(m_atEnd.resident - m_afterWarmUp.resident), Megabytes(m_afterWarmUp.heapInUse),
      Megabytes(m_atEnd.heapInUse), m_glErrors.Count(),
      m_picturesShown ? "every tile shows its camera" : "not every tile shows its camera",
      Passed() ? "passed" : "FAILED");
  for (const wxString& error : m_glErrors.FirstLines()) line << "\n  " << error;
  if (!m_picturesShown) line << "\n" << m_pictureReport;
  return line;
}

// glibc keeps freed heap memory resident for reuse, and which pages stay depends on how the
// heap happens to be cut up (a run with no action at all holds the same bytes in use from the
// warm-up on, yet its heap grows by steps of 10 MB and more); its free pages are handed back
// first, so that what is read is what the process holds.
// Every mapping's resident size is summed; the heap is the mapping the kernel names "[heap]".
SoakRun::Memory SoakRun::Measure() {
  malloc_trim(0);
  Memory memory;
  std::ifstream smaps("/proc/self/smaps");
  bool inHeap = false;
  for (std::string line; std::getline(smaps, line);) {
    long kilobytes = 0;
    if (std::sscanf(line.c_str(), "Rss: %ld kB", &kilobytes) == 1) {
      memory.resident += kilobytes * 1024;
      if (inHeap) memory.heapResident += kilobytes * 1024;
    } else if (line.find('-') < line.find(' ')) {
      inHeap = line.size() >= 6 && line.compare(line.size() - 6, 6, "[heap]") == 0;
    }
  }
  memory.heapInUse = static_cast<long>(mallinfo2().uordblks);
  return memory;
}
