// PacketPacer: when a packet of a file or synthetic camera is due, so that it plays at its own
// rate: packet times are laid on the steady clock from the first packet on.
//
// It starts over when the times jump backwards (a file that loops), lie far ahead, or the
// player has fallen more than a second behind, rather than racing or waiting for long. It
// does not sleep; the caller waits until the time it returns.
#pragma once

#include <chrono>

class PacketPacer {
 public:
  using Clock = std::chrono::steady_clock;

  // Seconds per timestamp tick: num / den.
  void SetTimeBase(int num, int den);
  // Forgets the reference, so the next packet is due at once.
  void Restart() { m_started = false; }
  // When the packet stamped `pts` is due, seen at `now`.
  Clock::time_point DueTime(long long pts, Clock::time_point now);

 private:
  bool m_started = false;
  long long m_firstPts = 0;
  long long m_lastPts = 0;
  Clock::time_point m_start;
  double m_secondsPerTick = 1.0 / 90000;
};
