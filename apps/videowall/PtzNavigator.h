// PtzNavigator: the operator's digital PTZ gestures on a tile turned into pan, tilt and zoom
// (pan and tilt from -1 to 1 across the picture, zoom a magnification from 1 to the PTZ's
// largest).
//
// ZoomAt keeps the picture point under the pointer where it is; PanBy moves the view with a
// drag; both keep the view inside the picture. It is plain arithmetic on its own triple: the
// tile writes the result into the renderer's PTZ. It reads no events and draws nothing.
#pragma once

class PtzNavigator {
 public:
  explicit PtzNavigator(float maxZoom) : m_maxZoom(maxZoom) {}

  // Multiplies the zoom by `factor` about the point at (u, v) of the shown view, each from 0
  // (left, top) to 1 (right, bottom).
  void ZoomAt(float u, float v, float factor);
  // Moves the view by a drag of (du, dv) view widths and heights (to the right and down drags
  // the picture along, so the view moves the other way).
  void PanBy(float du, float dv);
  void Reset();

  float Pan() const { return m_pan; }
  float Tilt() const { return m_tilt; }
  float Zoom() const { return m_zoom; }
  bool IsZoomed() const { return m_zoom > 1.0f; }

 private:
  // Keeps the view window (1 / zoom of the picture) inside the picture.
  void Confine();

  float m_maxZoom;
  float m_pan = 0;
  float m_tilt = 0;
  float m_zoom = 1;
};
