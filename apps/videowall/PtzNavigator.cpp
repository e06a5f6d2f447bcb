// PtzNavigator: zoom about a point and pan by a drag, in picture fractions.
#include "PtzNavigator.h"

#include <algorithm>

namespace {

// The view's centre as a fraction of the picture (0 to 1) and back.
float CentreOf(float panOrTilt) { return (panOrTilt + 1.0f) / 2.0f; }
float PanOf(float centre) { return centre * 2.0f - 1.0f; }

// The picture fraction at `along` (0 to 1) of a view centred at `centre` at `zoom`.
float PointOf(float centre, float along, float zoom) { return centre + (along - 0.5f) / zoom; }

}  // namespace

void PtzNavigator::ZoomAt(float u, float v, float factor) {
  const float zoom = std::clamp(m_zoom * factor, 1.0f, m_maxZoom);
  const float x = PointOf(CentreOf(m_pan), u, m_zoom);
  const float y = PointOf(CentreOf(m_tilt), v, m_zoom);
  m_zoom = zoom;
  m_pan = PanOf(x - (u - 0.5f) / zoom);
  m_tilt = PanOf(y - (v - 0.5f) / zoom);
  Confine();
}

void PtzNavigator::PanBy(float du, float dv) {
  m_pan = PanOf(CentreOf(m_pan) - du / m_zoom);
  m_tilt = PanOf(CentreOf(m_tilt) - dv / m_zoom);
  Confine();
}

void PtzNavigator::Reset() {
  m_pan = 0;
  m_tilt = 0;
  m_zoom = 1;
}

void PtzNavigator::Confine() {
  const float half = 0.5f / m_zoom;
  m_pan = PanOf(std::clamp(CentreOf(m_pan), half, 1.0f - half));
  m_tilt = PanOf(std::clamp(CentreOf(m_tilt), half, 1.0f - half));
}
