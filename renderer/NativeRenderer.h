// NativeRenderer: the software back-end, drawing through the device context of a paint.
//
// Each frame is kept as packed RGB24 bytes in the base's frame buffer, wrapped (not copied)
// in an image, cropped and scaled by the toolkit and blitted into the tile; overlays are
// drawn with ordinary pens, brushes and text. It is what the facade falls back to when
// OpenGL is missing or fails. It accepts no other pixel format, converts no colour spaces,
// and draws nothing without a device context (RequiresDC). The parent window must stay alive
// for as long as the renderer draws: its background colour paints the area around the frame.
#pragma once

#include <renderer/RendererBase.h>

class NativeRenderer : public RendererBase {
 public:
  explicit NativeRenderer(wxWindow* parent);
  ~NativeRenderer() override;

  bool RequiresDC() override;
  bool IsPixelFormatSupported(int format) override;
  using RendererBase::GetFrameBuffer;
  // Lends the frame buffer as one RGB24 plane of `width` x 3 bytes a row. A side beyond
  // kMaxMemoryFrameSide (or below 1) is refused.
  bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                      int* pitches) override;
  void DrawImage(wxDC* dc, IRendererImage* image, int x, int y) override;
  void DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) override;

  bool IsMultiLineDrawLabelSupported() override;
  void CopySettings(RendererBase* target) override;
  void DrawFrame(wxDC* dc) override;
  void DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour, wxRect rect,
                   int alignment, bool scale, wxColour background) override;
  void DoDrawRect(wxDC* dc, wxRect rect, wxColour colour) override;
  void DoDrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) override;
  void DoDrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) override;
  IRendererImage* DoCreateImage(const wxImage& image) override;
  void OnBeforeDraw(wxDC* dc) override;
  void OnInit() override;

  // Blits a bitmap as it is, through its mask when it has one.
  virtual void DoDrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y);

  // Copies the packed RGB rows of `image` into the reused 24-bit member bitmap through 32-bit
  // raw access; false when the bitmap cannot be made or opened that way. GTK never opens a
  // 24-bit bitmap at 32 bits, so there it always answers false. Nothing in the library calls it.
  bool CopyToBitmap(wxImage& image);

 protected:
  // Copies `height` rows of `width` x 3 packed bytes to the starts of rows `stride` bytes
  // apart, byte for byte: the pixels are not widened to the destination's pixel size.
  static void CopyRawRows(const unsigned char* source, int width, int height,
                          unsigned char* destination, int stride);

  // The rectangle an outline of `width` around `rect` is stroked on, so that the stroke lies
  // inside `rect`.
  static wxRect OutlinePath(const wxRect& rect, int width);

  // Fills `rect` with `brush` and no outline.
  static void FillRectangle(wxDC* dc, const wxRect& rect, const wxBrush& brush);

  wxBitmap m_bitmap;  // reused by CopyToBitmap
};
