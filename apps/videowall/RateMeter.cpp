// RateMeter: difference of counts over difference of times.
#include "RateMeter.h"

double RateMeter::Sample(long long count, Clock::time_point now) {
  const double seconds = std::chrono::duration<double>(now - m_time).count();
  // A count that went back (the tiles were made anew) starts over.
  if (m_started && seconds > 0 && count >= m_count) {
    m_rate = static_cast<double>(count - m_count) / seconds;
  }
  m_started = true;
  m_count = count;
  m_time = now;
  return m_rate;
}
