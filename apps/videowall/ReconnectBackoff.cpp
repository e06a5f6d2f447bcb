// ReconnectBackoff: doubling waits with a ceiling.
#include "ReconnectBackoff.h"

#include <algorithm>

std::chrono::seconds ReconnectBackoff::Next() {
  const std::chrono::seconds wait = m_next;
  m_next = std::min(m_next * 2, kLongest);
  return wait;
}
