// VideoOutRenderer: placement of the decoder's video output, the grey backdrop, and overlays
// recorded per pass and repainted only when they change.
#include "VideoOutRenderer.h"

#include <cstring>

#include <wx/dcbuffer.h>
#include <wx/dcclient.h>
#include <wx/event.h>
#include <wx/window.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/IVideoOutput.h>

#include "NativeImage.h"

namespace {

// The backdrop under the decoder's picture, visible until it presents the first frame and
// wherever the picture does not reach.
const wxColour kBackdropColour(118, 118, 118, 255);

// Whether neither has a mask colour, or both the same one.
bool SameMask(const wxImage& one, const wxImage& other) {
  if (one.HasMask() != other.HasMask()) return false;
  return !one.HasMask() ||
         (one.GetMaskRed() == other.GetMaskRed() && one.GetMaskGreen() == other.GetMaskGreen() &&
          one.GetMaskBlue() == other.GetMaskBlue());
}

// Whether two recorded pictures show the same. Each recorded operation keeps a share of its
// pixels, so a shared one cannot have been freed and reused meanwhile; otherwise the pixels
// decide (a bitmap drawn translucently becomes a new temporary image on every pass).
bool SamePicture(const wxImage& one, const wxImage& other) {
  if (one.IsSameAs(other)) return true;
  if (!one.IsOk() || !other.IsOk() || one.GetSize() != other.GetSize() ||
      one.HasAlpha() != other.HasAlpha() || !SameMask(one, other)) {
    return false;
  }
  const size_t pixels = static_cast<size_t>(one.GetWidth()) * one.GetHeight();
  return std::memcmp(one.GetData(), other.GetData(), pixels * 3) == 0 &&
         (!one.HasAlpha() || std::memcmp(one.GetAlpha(), other.GetAlpha(), pixels) == 0);
}

}  // namespace

void RoundAlpha(wxColour& colour) {
  static const unsigned char kLevels[] = {0, 128, 255};
  if (!colour.IsOk()) return;
  colour = RendererBase::ChangeAlpha(colour, kLevels[colour.Alpha() / 86]);
}

// ---- Recorded operations --------------------------------------------------------------------

VideoOutRenderer::VideoOutDrawOp::VideoOutDrawOp(int kind)
    : type(kind), param(0), scaleFont(false), image(nullptr) {}

bool VideoOutRenderer::VideoOutDrawOp::operator==(const VideoOutDrawOp& other) const {
  return type == other.type && text == other.text && font == other.font && colour == other.colour &&
         backgroundColour == other.backgroundColour && rect == other.rect && param == other.param &&
         scaleFont == other.scaleFont && SamePicture(picture, other.picture);
}

// ---- Construction and the video output ------------------------------------------------------

VideoOutRenderer::VideoOutRenderer(wxWindow* parent)
    : NativeRenderer(parent), m_videoOutput(nullptr) {}

VideoOutRenderer::~VideoOutRenderer() { CDecompressor::DeleteVideoOutput(m_videoOutput); }

// A renderer without a window has no idle time to watch (and draws nothing).
void VideoOutRenderer::OnInit() {
  NativeRenderer::OnInit();
  if (!GetParent()) return;
  m_idleBinding = std::make_unique<EventBinding<wxIdleEvent, VideoOutRenderer>>(
      GetParent(), wxEVT_IDLE, &VideoOutRenderer::OnIdle, this);
}

void VideoOutRenderer::OnIdle(wxIdleEvent& event) {
  if (m_videoOutput && !GetParent()->IsShownOnScreen()) {
    CDecompressor::DeleteVideoOutput(m_videoOutput);
  }
  event.Skip();
}

void VideoOutRenderer::SetVideoOutput(IVideoOutput* output) { m_videoOutput = output; }

IVideoOutput* VideoOutRenderer::GetVideoOutput() { return m_videoOutput; }

bool VideoOutRenderer::RequiresDC() { return !HasFrame(); }

unsigned char VideoOutRenderer::GetOpacity() const {
  return NativeRenderer::GetOpacity() != 0 ? 255 : 0;
}

bool VideoOutRenderer::ClearFrame() {
  CDecompressor::DeleteVideoOutput(m_videoOutput);
  return NativeRenderer::ClearFrame();
}

// The next back-end takes over the tile: the idle binding and the video output go now.
void VideoOutRenderer::CopySettings(RendererBase* target) {
  NativeRenderer::CopySettings(target);
  m_idleBinding.reset();
  CDecompressor::DeleteVideoOutput(m_videoOutput);
}

bool VideoOutRenderer::BeginHardwareImage(int width, int height, int format, HardwareImageInfo&) {
  unsigned char* planes[3] = {nullptr, nullptr, nullptr};
  int pitches[3] = {0, 0, 0};
  return GetFrameBuffer(width, height, format, planes, pitches) && pitches[1] == 0 &&
         pitches[2] == 0;
}

void VideoOutRenderer::EndHardwareImage(HardwareImageInfo&) {
  unsigned char* planes[3] = {nullptr, nullptr, nullptr};
  int pitches[3] = {0, 0, 0};
  FlushFrameBuffer(planes, pitches);
}

// ---- Frame and backdrop ---------------------------------------------------------------------

void VideoOutRenderer::DrawFrame(wxDC* dc) {
  if (!HasFrame() || !m_videoOutput) {
    NativeRenderer::DrawFrame(dc);
    return;
  }
  const wxSize video = GetVideoSize();
  m_width = video.x;
  m_height = video.y;
  wxRect destination;
  wxRect source;
  GetSubImageRect(destination, source, false);
  const wxPoint screen = GetParent()->ClientToScreen(destination.GetTopLeft());
  m_videoOutput->SetOutputRect(screen.x, screen.y, destination.width, destination.height);
}

void VideoOutRenderer::OnBeforeDraw(wxDC* dc) {
  if (!dc) return;
  NativeRenderer::OnBeforeDraw(dc);
  if (!HasFrame() || !m_videoOutput) return;
  wxRect destination;
  wxRect source;
  GetSubImageRect(destination, source, false);
  FillRectangle(dc, destination, wxBrush(kBackdropColour, wxBRUSHSTYLE_SOLID));
  dc->SetBrush(*wxTRANSPARENT_BRUSH);
}

// ---- Overlay recording ----------------------------------------------------------------------

bool VideoOutRenderer::Record(wxDC* dc, const VideoOutDrawOp& op) {
  // Images carry no colour, so they are always kept.
  const bool invisible = op.colour.IsOk() && op.colour.Alpha() == 0;
  if (m_videoOutput && invisible) return false;
  m_drawOps.push_back(op);
  return dc != nullptr;
}

void VideoOutRenderer::DrawImage(wxDC* dc, IRendererImage* image, int x, int y) {
  VideoOutDrawOp op(DRAW_OP_IMAGE);
  op.rect = wxRect(x, y, 0, 0);
  op.image = image;
  if (image) op.picture = static_cast<NativeImage*>(image)->GetImage();
  if (Record(dc, op)) NativeRenderer::DrawImage(dc, image, x, y);
}

void VideoOutRenderer::DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour colour,
                                   wxRect rect, int alignment, bool scaleFont,
                                   wxColour background) {
  RoundAlpha(colour);
  RoundAlpha(background);
  VideoOutDrawOp op(DRAW_OP_LABEL);
  op.text = text;
  op.font = font;
  op.colour = colour;
  op.backgroundColour = background;
  op.rect = rect;
  op.param = alignment;
  op.scaleFont = scaleFont;
  if (!Record(dc, op)) return;
  // A label is one operation: the background box the software label draws as a rectangle of
  // its own is recorded aside and dropped.
  std::vector<VideoOutDrawOp> label;
  label.swap(m_drawOps);
  NativeRenderer::DoDrawLabel(dc, text, font, colour, rect, alignment, scaleFont, background);
  m_drawOps.swap(label);
}

void VideoOutRenderer::DoDrawRect(wxDC* dc, wxRect rect, wxColour colour) {
  RoundAlpha(colour);
  VideoOutDrawOp op(DRAW_OP_RECT);
  op.colour = colour;
  op.rect = rect;
  if (!Record(dc, op)) return;
  if (!m_videoOutput || !colour.IsOk() || colour.Alpha() == 255) {
    NativeRenderer::DoDrawRect(dc, rect, colour);
    return;
  }
  // The device context cannot blend over the decoder's picture: a hatch stands in for the
  // half-transparent fill.
  FillRectangle(dc, rect, wxBrush(colour, wxBRUSHSTYLE_CROSSDIAG_HATCH));
}

void VideoOutRenderer::DoDrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) {
  RoundAlpha(colour);
  VideoOutDrawOp op(DRAW_OP_RECT_OUTLINE);
  op.colour = colour;
  op.rect = rect;
  op.param = width;
  if (Record(dc, op)) NativeRenderer::DoDrawRectOutline(dc, rect, colour, width);
}

void VideoOutRenderer::DoDrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) {
  RoundAlpha(colour);
  VideoOutDrawOp op(DRAW_OP_LINE);
  op.colour = colour;
  op.rect = wxRect(from.x, from.y, to.x, to.y);
  op.param = width;
  if (Record(dc, op)) NativeRenderer::DoDrawLine(dc, from, to, colour, width);
}

// ---- Overlay passes -------------------------------------------------------------------------

// With a device context the overlays are drawn as they record. Without one (a paint of the
// video output alone) they are only recorded, and the window is repainted only when they
// differ from the last pass.
void VideoOutRenderer::DrawOverlays(wxDC* dc) {
  std::vector<VideoOutDrawOp> previous;
  previous.swap(m_drawOps);
  NativeRenderer::DrawOverlays(dc);
  if (dc) return;
  if (!HasFrame() || !m_videoOutput) return;
  if (m_drawOps == previous) return;
  RepaintOverlays();
}

void VideoOutRenderer::RepaintOverlays() {
  m_drawOps.clear();
  wxWindow* parent = GetParent();
  wxClientDC window(parent);
  wxBufferedDC buffered(&window, parent->GetClientSize(), wxBUFFER_CLIENT_AREA);
  OnBeforeDraw(&buffered);
  NativeRenderer::DrawOverlays(&buffered);
}
