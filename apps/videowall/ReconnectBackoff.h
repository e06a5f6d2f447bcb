// ReconnectBackoff: how long a tile waits before it tries a lost source again: 1 s, then 2, 4,
// 8, 16 and at most 30 s, back to 1 s once the source plays again.
//
// It only counts; the waiting itself (interruptible, off the GUI thread) is the caller's.
#pragma once

#include <chrono>

class ReconnectBackoff {
 public:
  static constexpr std::chrono::seconds kFirst{1};
  static constexpr std::chrono::seconds kLongest{30};

  // The wait before the next attempt; each call doubles the one after, up to kLongest.
  std::chrono::seconds Next();
  // The source is back: the next failure waits kFirst again.
  void Reset() { m_next = kFirst; }

 private:
  std::chrono::seconds m_next = kFirst;
};
