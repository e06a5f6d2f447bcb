// CDigitalPTZ: pan/tilt/zoom state and the zoom window it selects.
#include "CDigitalPTZ.h"

#include <algorithm>
#include <climits>
#include <cmath>

namespace {

float Clamp(float value, float low, float high) {
  if (!(value >= low)) return low;  // NaN lands here too
  return std::min(value, high);
}

// Places a window of `size` whose centre points at `direction` (-1..1) across a span. Worked
// out in 64 bits, and a span that reaches past the int range keeps its window inside it, so
// the window's end (position + size) is always an int.
int PlaceWindow(int start, int span, int size, float direction) {
  const double centre = start + span * (1.0 + Clamp(direction, -1.0f, 1.0f)) / 2.0;
  const long long first = start;
  const long long last = std::max(first, first + span - size);
  const long long position = std::clamp(std::llround(centre - size / 2.0), first, last);
  return static_cast<int>(std::min<long long>(position, INT_MAX - size));
}

}  // namespace

CDigitalPTZ::CDigitalPTZ()
    : enabled(false),
      m_pan(0.0f),
      m_tilt(0.0f),
      m_zoom(1.0f),
      m_zoomActive(false),
      m_maxZoom(kDefaultMaxZoom) {}

CDigitalPTZ::~CDigitalPTZ() = default;

bool CDigitalPTZ::IsActive() { return enabled && m_zoom > 1.0f; }

void CDigitalPTZ::SetPanTiltZoom(float pan, float tilt, float zoom) {
  m_pan = pan;
  m_tilt = tilt;
  m_zoom = zoom;
}

void CDigitalPTZ::GetPanTiltZoom(float& pan, float& tilt, float& zoom) const {
  pan = m_pan;
  tilt = m_tilt;
  zoom = m_zoom;
}

void CDigitalPTZ::SetZoomActive(bool active) { m_zoomActive = active; }

bool CDigitalPTZ::GetZoomActive() const { return m_zoomActive; }

void CDigitalPTZ::SetMaxZoom(float maxZoom) { m_maxZoom = maxZoom; }

float CDigitalPTZ::GetMaxZoom() const { return m_maxZoom; }

PtzRect CDigitalPTZ::GetZoomWindow(const PtzRect& region) const {
  if (region.IsEmpty()) return PtzRect{region.x, region.y, 0, 0};
  const float zoom = Clamp(m_zoom, 1.0f, std::max(1.0f, m_maxZoom));
  PtzRect window;
  window.width = std::max(1, static_cast<int>(std::lround(region.width / zoom)));
  window.height = std::max(1, static_cast<int>(std::lround(region.height / zoom)));
  window.x = PlaceWindow(region.x, region.width, window.width, m_pan);
  window.y = PlaceWindow(region.y, region.height, window.height, m_tilt);
  return window;
}
