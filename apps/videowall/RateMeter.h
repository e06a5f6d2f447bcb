// RateMeter: events per second from a running count, sampled now and then (once a second by
// the wall's status timer).
//
// It keeps only the previous sample; it takes no lock and is read and written on one thread.
#pragma once

#include <chrono>

class RateMeter {
 public:
  using Clock = std::chrono::steady_clock;

  // The rate since the previous sample (0 on the first; the last rate when the count went
  // back); remembers this one.
  double Sample(long long count, Clock::time_point now);
  double Rate() const { return m_rate; }

 private:
  bool m_started = false;
  long long m_count = 0;
  Clock::time_point m_time;
  double m_rate = 0;
};
