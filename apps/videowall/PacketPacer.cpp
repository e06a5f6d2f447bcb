// PacketPacer: timestamps onto the steady clock, restarting on jumps.
#include "PacketPacer.h"

namespace {

constexpr std::chrono::seconds kMostAhead{2};
constexpr std::chrono::seconds kMostBehind{1};

}  // namespace

void PacketPacer::SetTimeBase(int num, int den) {
  m_secondsPerTick = num > 0 && den > 0 ? static_cast<double>(num) / den : 1.0 / 90000;
}

PacketPacer::Clock::time_point PacketPacer::DueTime(long long pts, Clock::time_point now) {
  if (m_started && pts >= m_lastPts) {
    const std::chrono::duration<double> offset((pts - m_firstPts) * m_secondsPerTick);
    const auto due = m_start + std::chrono::duration_cast<Clock::duration>(offset);
    m_lastPts = pts;
    if (due <= now + kMostAhead && due >= now - kMostBehind) return due;
  }
  m_started = true;
  m_firstPts = pts;
  m_lastPts = pts;
  m_start = now;
  return now;
}
