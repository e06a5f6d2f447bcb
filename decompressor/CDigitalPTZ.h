// CDigitalPTZ: the digital pan-tilt-zoom setting of one camera view.
//
// Holds the pan/tilt/zoom triple, the zoom-active flag and the largest zoom allowed, and
// computes the zoom window that the triple selects inside a region of the picture. It does
// not know the video or window size: NormalDigitalPTZ adds that geometry, and the decoder
// crops with the zoom window when a host hands it an engaged PTZ.
//
// Conventions: pan and tilt run from -1 to 1 and name where the centre of the view points,
// pan from the left edge of the region to its right edge, tilt from the top edge to the
// bottom edge (0 is the centre). Zoom is a magnification: 1 shows the whole region, 2 a
// window of half its width and height. Values outside the ranges are kept as set and clamped
// only when the window is computed, so settings can be copied between views unchanged.
#pragma once

struct PtzRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool IsEmpty() const { return width <= 0 || height <= 0; }
  bool operator==(const PtzRect& o) const {
    return x == o.x && y == o.y && width == o.width && height == o.height;
  }
};

class CDigitalPTZ {
 public:
  static constexpr float kDefaultMaxZoom = 16.0f;

  CDigitalPTZ();
  virtual ~CDigitalPTZ();

  // In use: enabled by the host and zoomed in beyond the whole picture. Renderers ask this to
  // decide whether the host's PTZ replaces their own un-zoomed one.
  virtual bool IsActive();

  void SetPanTiltZoom(float pan, float tilt, float zoom);
  void GetPanTiltZoom(float& pan, float& tilt, float& zoom) const;

  // Whether the renderer applies the zoom itself (cropping by texture coordinates or
  // sub-image) instead of asking the decoder for a cropped picture.
  void SetZoomActive(bool active);
  bool GetZoomActive() const;

  // The largest magnification the view accepts; the zoom is clamped to [1, max zoom].
  void SetMaxZoom(float maxZoom);
  float GetMaxZoom() const;

  // The window the triple selects inside `region`: its size is the region's divided by the
  // clamped zoom (at least 1 x 1), its centre where pan and tilt point, moved back inside the
  // region where it would stick out. An empty region yields an empty window.
  PtzRect GetZoomWindow(const PtzRect& region) const;

  // The host switches digital PTZ on and off for the view with this.
  bool enabled;

 protected:
  float m_pan;
  float m_tilt;
  float m_zoom;
  bool m_zoomActive;
  float m_maxZoom;
};
