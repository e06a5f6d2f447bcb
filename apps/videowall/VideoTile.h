// VideoTile: one camera tile of the wall, a RendererPanel whose Renderer picks its own
// back-end, fed by a TileFeed (one worker thread per tile).
//
// On each GUI tick it takes the feed's new picture, if there is one, through the facade's
// NegotiateFormat and CopyFrame, and paints once: a GL back-end is rendered at once through a
// client DC (its canvas covers the panel, so the panel's paint event cannot be relied on), a
// software one through a refresh. It draws its overlays through the facade, turns wheel and
// drag into digital PTZ, and reports clicks to the wall. The PTZ is the tile's own, lent to
// the renderer through its PTZ slot: a lent PTZ is shared with every back-end the facade
// switches to, and outlives them, whereas a back-end's own PTZ goes with the back-end (a
// fallback ending inside NegotiateFormat deletes it at once). It never
// waits for its worker and shows no dialog; a lost source shows as "No signal".
#pragma once

#include <memory>

#include <decompressor/CDigitalPTZ.h>
#include <renderer/RendererPanel.h>

#include "ITileListener.h"
#include "PictureShapeRule.h"
#include "PtzNavigator.h"
#include "RateMeter.h"
#include "TileFeed.h"

class VideoTile : public RendererPanel, public IRendererDrawOverlays {
 public:
  VideoTile(wxWindow* parent, const wxString& name, RenderMode mode,
            std::unique_ptr<IPacketSource> source, ITileListener* listener,
            HandOver handOver = HandOver::Latest);
  ~VideoTile() override;

  // Lets the worker begin to stop; the destructor joins it.
  void RequestStop() { m_feed->RequestStop(); }
  // Stops and joins the worker and starts a new one on `source`; the last picture stays until
  // the new source delivers.
  void ReplaceSource(std::unique_ptr<IPacketSource> source);

  // GUI tick: takes and paints a new picture; whether there was one.
  bool ShowNewPicture();
  // Paints again without a new picture (overlays changed, or no signal); nothing while the
  // tile is not on screen.
  void Repaint();
  // Once a second: the received and painted rates for the statistics line.
  void SampleRates(RateMeter::Clock::time_point now);

  void SetRenderMode(RenderMode mode);
  void SetPictureShapeRule(PictureShapeRule rule);
  void SetOverlaysShown(bool shown);
  // OSD position of the camera name, 1 (top left) to 9 (bottom right).
  void SetNamePosition(int position);
  void SetSelected(bool selected);
  // Digital PTZ as the wheel and a drag give it: zoom by `factor` about the point at (u, v) of
  // the view (each 0 to 1), and move the view by a drag of (du, dv) view sizes.
  void ZoomAt(float u, float v, float factor);
  void PanBy(float du, float dv);
  void ResetPtz();

  FeedState State() const { return m_feed->State(); }
  long long Painted() const { return m_painted; }
  long long Dropped() const { return m_feed->Dropped(); }
  const PtzNavigator& Ptz() const { return m_ptz; }
  // The size of the pictures the source delivers (0 x 0 before the first).
  wxSize VideoSize() const { return m_videoSize; }
  // Where the picture lies in the tile.
  wxRect PictureRect() const;
  // "OpenGL", "Software" or "Software (fallback)".
  wxString BackendName() const;

  void RendererDrawOverlays(IRenderer* renderer, wxDC* dc) override;

 private:
  void CopyPicture(CDecompressor& decoder, double pictureSeconds);
  wxString StatisticsLine() const;
  void ApplyPtz();
  // The pointer's place in the picture, each from 0 to 1.
  wxRealPoint PicturePoint(const wxPoint& position) const;

  void OnWheel(wxMouseEvent& event);
  void OnLeftDown(wxMouseEvent& event);
  void OnMotion(wxMouseEvent& event);
  void OnRightDown(wxMouseEvent& event);
  void OnDoubleClick(wxMouseEvent& event);

  wxString m_name;
  ITileListener* m_listener;
  IRendererImage* m_logo;  // owned by the facade
  PtzNavigator m_ptz;
  CDigitalPTZ m_ptzSetting;  // lent to the renderer
  wxPoint m_dragFrom;
  bool m_overlaysShown = true;
  int m_namePosition = 1;
  bool m_selected = false;
  bool m_unpainted = false;
  wxSize m_videoSize;
  double m_pictureSeconds = 0;
  long long m_painted = 0;
  RateMeter m_receivedRate;
  RateMeter m_paintedRate;
  HandOver m_handOver;
  std::unique_ptr<TileFeed> m_feed;
};
