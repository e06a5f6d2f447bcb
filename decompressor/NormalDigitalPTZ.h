// NormalDigitalPTZ: a view's own PTZ, which knows the video and the window it is shown in.
//
// It answers the geometric questions of a renderer: which aspect ratio is in effect, where in
// the window the picture goes (letterbox or pillarbox, or stretched), and, when the renderer
// zooms by itself, which part of the video it shows and where. It holds no pixels and draws
// nothing.
//
// Geometry (all in integer pixels):
// - GetCurrentAspectRatio(): the forced ratio when it is non-zero, else the video's
//   width / height (0 while the video has no height).
// - GetDestinationRect(aspect): the largest rectangle of that aspect centred in the client
//   area, (client width, client width / aspect) when the client is the taller shape
//   (letterbox), (client height * aspect, client height) otherwise (pillarbox); the whole
//   client area when the aspect is ignored or not a positive finite number. Example: a
//   1920x1080 video in an 800x800 client gives (0, 175, 800, 450).
// - GetAdjustedRects(): the source is the zoom window (CDigitalPTZ::GetZoomWindow) of this
//   PTZ inside the region of interest (the source rectangle, or the whole video when that is
//   empty, clipped to the video); the destination is GetDestinationRect of the aspect that
//   window has on screen. Zoom 1 over the whole video shows the whole picture.
#pragma once

#include "CDigitalPTZ.h"

class NormalDigitalPTZ : public CDigitalPTZ {
 public:
  NormalDigitalPTZ();
  ~NormalDigitalPTZ() override;

  void SetSize(int width, int height);
  void GetSize(int& width, int& height) const;

  void SetClientSize(int width, int height);
  void GetClientSize(int& width, int& height) const;

  // Region of interest inside the video; empty (the default) means the whole video.
  void SetSourceRect(int x, int y, int width, int height);
  void GetSourceRect(int& x, int& y, int& width, int& height) const;

  void SetAspectRatio(float ratio);
  float GetAspectRatio() const;
  void SetIgnoreAspectRatio(bool ignore);
  bool GetIgnoreAspectRatio() const;

  float GetCurrentAspectRatio() const;
  void GetDestinationRect(float aspect, int& x, int& y, int& width, int& height) const;
  void GetAdjustedRects(int& srcX, int& srcY, int& srcWidth, int& srcHeight, int& dstX, int& dstY,
                        int& dstWidth, int& dstHeight) const;

 protected:
  PtzRect Region() const;

  int m_width;
  int m_height;
  int m_clientWidth;
  int m_clientHeight;
  PtzRect m_sourceRect;
  float m_aspectRatio;
  bool m_ignoreAspectRatio;

 public:
  // Set by the renderer facade while frames take the copying road; renderers then keep the
  // decoder's crop instead of zooming themselves.
  bool slowPath;
};
