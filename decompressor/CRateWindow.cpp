// CRateWindow: a sliding sum over stream time.
#include "CRateWindow.h"

#include <algorithm>

void CRateWindow::SetTimeBase(int num, int den) {
  if (num > 0 && den > 0) m_tick = static_cast<double>(num) / den;
  Reset();
}

void CRateWindow::Reset() {
  m_entries.clear();
  m_sum = 0;
}

void CRateWindow::Add(long long pts, double amount) {
  m_newest = m_entries.empty() ? pts : std::max(m_newest, pts);
  m_entries.push_back(Entry{pts, amount});
  m_sum += amount;
  const double window = m_seconds / m_tick;
  while (m_entries.size() > 1 && static_cast<double>(m_newest - m_entries.front().pts) > window) {
    m_sum -= m_entries.front().amount;
    m_entries.pop_front();
  }
}

double CRateWindow::GetRate() const {
  if (m_entries.empty()) return 0;
  const double span = static_cast<double>(m_newest - m_entries.front().pts) * m_tick;
  return span > 0 ? (m_sum - m_entries.front().amount) / span : 0;
}
