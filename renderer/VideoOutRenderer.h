// VideoOutRenderer: the back-end for decoders that present the picture themselves.
//
// The decoder's IVideoOutput draws the frame straight onto the screen; this back-end only
// tells it where (in screen coordinates), paints a grey backdrop under it and keeps the
// overlays that the host draws through the toolkit, recording them so that, between paints,
// the overlay layer is repainted only when it changed. Without a video output it is exactly
// NativeRenderer. It never blends over the decoder's picture (a device context cannot), so
// overlay alpha is reduced to three levels and half-transparent fills become a hatch. It owns
// the video output handed to it and gives it back whenever the tile is not on screen.
#pragma once

#include <memory>
#include <vector>

#include <renderer/EventBinding.h>
#include <renderer/NativeRenderer.h>

// Reduces a valid colour's alpha to 0 (0 to 85), 128 (86 to 171) or 255 (172 to 255), the
// levels an overlay over a video output can show; an invalid colour is left alone.
void RoundAlpha(wxColour& colour);

class VideoOutRenderer : public NativeRenderer {
 public:
  enum {
    DRAW_OP_IMAGE = 0,
    DRAW_OP_LABEL = 1,
    DRAW_OP_RECT = 2,
    DRAW_OP_RECT_OUTLINE = 3,
    DRAW_OP_LINE = 4,
  };

  // One overlay operation of a pass, as the host asked for it (colours already rounded).
  // Copies share the reference-counted text, font, colours and picture. Two operations are
  // equal when they would draw the same: every field but the image's address, which may be
  // reused by another image once the first is deleted, stands for itself; the picture decides
  // for images.
  struct VideoOutDrawOp {
    explicit VideoOutDrawOp(int kind);

    bool operator==(const VideoOutDrawOp& other) const;

    int type;
    wxString text;              // label only
    wxFont font;                // label only
    wxColour colour;            // unset for images
    wxColour backgroundColour;  // label only
    wxRect rect;                // image: x, y, 0, 0; line: the two end points' coordinates
    int param;                  // label: alignment; outline and line: width
    bool scaleFont;             // label only
    IRendererImage* image;      // image only; not owned
    wxImage picture;            // image only: a share of the image's pixels
  };

  explicit VideoOutRenderer(wxWindow* parent);
  ~VideoOutRenderer() override;

  bool RequiresDC() override;
  bool ClearFrame() override;
  // Takes ownership; an output handed over earlier is not released.
  void SetVideoOutput(IVideoOutput* output) override;
  IVideoOutput* GetVideoOutput() override;
  // Sizes the frame buffer to the frame; true only for a single-plane buffer. `info` is not
  // touched: the decoder presents the picture itself.
  bool BeginHardwareImage(int width, int height, int format, HardwareImageInfo& info) override;
  void EndHardwareImage(HardwareImageInfo& info) override;
  void DrawImage(wxDC* dc, IRendererImage* image, int x, int y) override;
  // All or nothing: any non-zero opacity reads as 255, since nothing blends over the picture.
  unsigned char GetOpacity() const override;

  void CopySettings(RendererBase* target) override;
  void DrawFrame(wxDC* dc) override;
  void DrawOverlays(wxDC* dc) override;
  void DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour colour, wxRect rect,
                   int alignment, bool scaleFont, wxColour background) override;
  void DoDrawRect(wxDC* dc, wxRect rect, wxColour colour) override;
  void DoDrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) override;
  void DoDrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) override;
  void OnBeforeDraw(wxDC* dc) override;
  void OnInit() override;

  // Gives the video output back when the tile is not shown on screen; the facade makes a new
  // one when frames come again.
  void OnIdle(wxIdleEvent& event);

 protected:
  IVideoOutput* m_videoOutput;
  std::vector<VideoOutDrawOp> m_drawOps;

 private:
  // Appends `op` unless it would be invisible over a video output; true when it is also to
  // be drawn (it was kept and there is a device context).
  bool Record(wxDC* dc, const VideoOutDrawOp& op);
  // Redraws the backdrop and every overlay into the window through an off-screen buffer.
  void RepaintOverlays();

  // OnIdle bound to the window's idle event, from the first paint to the hand-over.
  std::unique_ptr<EventBinding<wxIdleEvent, VideoOutRenderer>> m_idleBinding;
};
