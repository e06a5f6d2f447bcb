// VideoTile: one tile of the video wall, playing a synthetic camera through the software
// back-end.
//
// Each timer tick the camera draws its next picture, the decoder takes it in as a raw frame and
// converts it straight into the renderer's frame buffer at the size the picture will occupy in
// the tile (so the renderer does not scale it again), and the tile repaints. During each paint
// the tile draws its overlays: the camera name, the stream description and an outline that
// follows the camera's moving box. It reads no files and opens no streams.
#pragma once

#include <decompressor/CDecompressor.h>
#include <decompressor/CSyntheticCamera.h>
#include <renderer/NativeRenderer.h>
#include <wx/window.h>

class VideoTile : public wxWindow, public IRendererDrawOverlays {
 public:
  VideoTile(wxWindow* parent, const wxString& name, const wxSize& cameraSize, int rate);

  // Takes the camera's next picture into the renderer and schedules a repaint.
  void NextFrame();

  // Paints the tile into any device context (the window's, or a memory one for screenshots).
  void RenderTo(wxDC& dc);

  void RendererDrawOverlays(IRenderer* renderer, wxDC* dc) override;

 private:
  void OnPaint(wxPaintEvent& event);
  // The picture's place in the tile, in tile pixels.
  wxRect PictureRect();

  wxString m_name;
  CSyntheticCamera m_camera;
  CDecompressor m_decoder;
  NativeRenderer m_renderer;
};
