// CRateWindow: a rate over the last seconds of stream time, for the decoder's statistics.
//
// Amounts (pictures, bits) are added at stream timestamps; the rate is the amount per second
// over the window that ends at the newest timestamp. Reading is O(1) and adding amortised
// O(1), so a host can read it on every paint. Timestamps are expected to rise in arrival order
// (reordered ones only blur the window's edge); it measures no wall-clock time. Internal (not
// installed); no FFmpeg types.
#pragma once

#include <deque>

class CRateWindow {
 public:
  explicit CRateWindow(double seconds) : m_seconds(seconds) {}

  // The length of one timestamp step in seconds, num / den; forgets what was added.
  void SetTimeBase(int num, int den);
  void Reset();

  void Add(long long pts, double amount);

  // Amount per second: what arrived after the window's first entry, over the time from it to
  // the newest; 0 until two timestamps lie apart.
  double GetRate() const;

 private:
  struct Entry {
    long long pts;
    double amount;
  };

  double m_seconds;
  double m_tick = 1.0 / 90000;
  std::deque<Entry> m_entries;
  long long m_newest = 0;
  double m_sum = 0;
};
