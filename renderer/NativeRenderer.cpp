// NativeRenderer: frames, images and overlays drawn through a device context.
#include "NativeRenderer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <wx/dc.h>
#include <wx/dcclient.h>
#include <wx/rawbmp.h>
#include <wx/window.h>

#include "NativeImage.h"

namespace {

// A translucent version of `image` for one draw: it shares the colour bytes of `image` and
// owns an alpha channel of its own, the image's alpha scaled by `opacity`, or `opacity`
// everywhere when the image has none.
wxImage FadedImage(const wxImage& image, unsigned char opacity) {
  wxImage faded(image.GetWidth(), image.GetHeight(), image.GetData(), true);
  faded.SetAlpha();
  unsigned char* alpha = faded.GetAlpha();
  const size_t count = static_cast<size_t>(image.GetWidth()) * image.GetHeight();
  if (!image.HasAlpha()) {
    std::fill(alpha, alpha + count, opacity);
    return faded;
  }
  const unsigned char* own = image.GetAlpha();
  for (size_t i = 0; i < count; ++i) alpha[i] = static_cast<unsigned char>(own[i] * opacity / 255);
  return faded;
}

wxBitmap ScreenBitmap(const wxImage& image) { return wxBitmap(image, wxBITMAP_SCREEN_DEPTH, 1.0); }

// The part of `rect` inside the device context's drawing area, computed wide: a host's
// destination may reach beyond the int range.
wxRect VisiblePart(const wxRect& rect, const wxDC& dc) {
  const wxSize size = dc.GetSize();
  const long long areaX = dc.DeviceToLogicalX(0);
  const long long areaY = dc.DeviceToLogicalY(0);
  const long long left = std::max<long long>(rect.x, areaX);
  const long long top = std::max<long long>(rect.y, areaY);
  const long long right =
      std::min(static_cast<long long>(rect.x) + rect.width, areaX + dc.DeviceToLogicalXRel(size.x));
  const long long bottom = std::min(static_cast<long long>(rect.y) + rect.height,
                                    areaY + dc.DeviceToLogicalYRel(size.y));
  if (right <= left || bottom <= top) return wxRect();
  return wxRect(static_cast<int>(left), static_cast<int>(top), static_cast<int>(right - left),
                static_cast<int>(bottom - top));
}

// The sample of a picture `size` pixels long that lands `offset` pixels into its `scaled`
// long image, by nearest neighbour.
int NearestSample(long long offset, int size, int scaled) {
  return static_cast<int>(offset * size / scaled);
}

// The `visible` part of `image` scaled by nearest neighbour into `destination`. Only that part
// is made: a destination far larger than the window (100000 pixels wide, say) would otherwise
// become a bitmap the display server cannot hold.
wxImage ScaledPart(const wxImage& image, const wxRect& destination, const wxRect& visible) {
  const int width = image.GetWidth();
  std::vector<int> columns(static_cast<size_t>(visible.width));
  for (int x = 0; x < visible.width; ++x) {
    columns[x] = NearestSample(static_cast<long long>(visible.x) - destination.x + x, width,
                               destination.width);
  }
  wxImage part(visible.width, visible.height, false);
  unsigned char* out = part.GetData();
  for (int y = 0; y < visible.height; ++y) {
    const int row = NearestSample(static_cast<long long>(visible.y) - destination.y + y,
                                  image.GetHeight(), destination.height);
    const unsigned char* in = image.GetData() + static_cast<size_t>(row) * width * 3;
    for (int column : columns) {
      std::memcpy(out, in + static_cast<size_t>(column) * 3, 3);
      out += 3;
    }
  }
  return part;
}

// Fills the device context with the window's background colour.
void ClearToBackground(wxDC& dc, const wxWindow& window) {
  dc.SetBackground(wxBrush(window.GetBackgroundColour(), wxBRUSHSTYLE_SOLID));
  dc.Clear();
}

}  // namespace

NativeRenderer::NativeRenderer(wxWindow* parent) : RendererBase(parent) {}

NativeRenderer::~NativeRenderer() = default;

bool NativeRenderer::RequiresDC() { return true; }

bool NativeRenderer::IsPixelFormatSupported(int format) { return format == PIXEL_FORMAT_RGB24; }

bool NativeRenderer::IsMultiLineDrawLabelSupported() { return true; }

// Nothing to prepare: the device context of each paint is all this back-end needs.
void NativeRenderer::OnInit() {}

bool NativeRenderer::GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                                    int* pitches) {
  return GetMemoryFrameBuffer(width, height, format, planes, pitches);
}

IRendererImage* NativeRenderer::DoCreateImage(const wxImage& image) {
  return new NativeImage(image);
}

// ---- Frame ----------------------------------------------------------------------------------

void NativeRenderer::OnBeforeDraw(wxDC* dc) {
  if (dc) ClearToBackground(*dc, *GetParent());
}

void NativeRenderer::DrawFrame(wxDC* dc) {
  if (!HasFrame() || !dc) return;
  const int width = std::abs(m_width);
  const int height = std::abs(m_height);
  // The stored size can outgrow the buffer when a subclass sets it to the video size; the
  // wrapped image must never reach past the bytes that exist.
  if (m_frameBuffer.size() < static_cast<size_t>(width) * height * 3) return;
  wxRect destination;
  wxRect source;
  GetSubImageRect(destination, source, false);
  const wxRect whole(0, 0, width, height);
  // Nothing sensible can be shown from a source outside the frame (a frame stored with a
  // negative size, say) or into an empty destination.
  if (!whole.Contains(source) || destination.width < 1 || destination.height < 1) return;

  wxImage image(width, height, m_frameBuffer.data(), true);
  if (source != whole) image = image.GetSubImage(source);
  // Within a pixel of the destination the frame is drawn as it is, one pixel short or long:
  // scaling would cost far more than it shows.
  if (std::abs(destination.width - image.GetWidth()) < 2 &&
      std::abs(destination.height - image.GetHeight()) < 2) {
    dc->DrawBitmap(ScreenBitmap(image), destination.x, destination.y, false);
    return;
  }
  // Scaled by nearest neighbour (the toolkit's normal quality), but only the part inside the
  // drawing area.
  const wxRect visible = VisiblePart(destination, *dc);
  if (visible.IsEmpty()) return;
  dc->DrawBitmap(ScreenBitmap(ScaledPart(image, destination, visible)), visible.x, visible.y,
                 false);
}

// ---- Images and bitmaps ---------------------------------------------------------------------

void NativeRenderer::DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) {
  if (!bitmap.IsOk()) return;
  if (GetOpacity() == 255) {
    DoDrawBitmap(dc, bitmap, x, y);
    return;
  }
  IRendererImage* image = CreateImage(bitmap.ConvertToImage());
  DrawImage(dc, image, x, y);
  DeleteImage(image);
}

void NativeRenderer::DoDrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) {
  if (!dc) return;
  dc->DrawBitmap(bitmap, x, y, bitmap.GetMask() != nullptr);
}

void NativeRenderer::DrawImage(wxDC* dc, IRendererImage* image, int x, int y) {
  if (!image || !image->IsOk()) return;
  auto* native = static_cast<NativeImage*>(image);
  const unsigned char opacity = GetOpacity();
  if (opacity == 255) {
    DoDrawBitmap(dc, native->GetBitmap(), x, y);
    return;
  }
  // Translucent draws are rare and each opacity would need its own bitmap: nothing is kept.
  DoDrawBitmap(dc, ScreenBitmap(FadedImage(native->GetImage(), opacity)), x, y);
}

// ---- Overlay primitives ---------------------------------------------------------------------

void NativeRenderer::DoDrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) {
  if (!dc) return;
  wxPen pen(colour, width, wxPENSTYLE_SOLID);
  pen.SetCap(wxCAP_BUTT);
  wxDCPenChanger usePen(*dc, pen);
  wxDCBrushChanger useBrush(*dc, *wxTRANSPARENT_BRUSH);
  dc->DrawLine(from, to);
}

void NativeRenderer::DoDrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) {
  if (!dc) return;
  wxPen pen(colour, width, wxPENSTYLE_SOLID);
  pen.SetJoin(wxJOIN_MITER);
  wxDCPenChanger usePen(*dc, pen);
  wxDCBrushChanger useBrush(*dc, *wxTRANSPARENT_BRUSH);
  dc->DrawRectangle(OutlinePath(rect, width));
}

// Inset by half the pen width and shrunk by the width less one, so the stroke lies inside
// `rect` instead of straddling its edges. Wide and clamped: a rectangle or width near the int
// limits must not overflow.
wxRect NativeRenderer::OutlinePath(const wxRect& rect, int width) {
  const long long half = width / 2;
  const long long shrink = static_cast<long long>(width) - 1;
  return wxRect(ClampToInt(rect.x + half), ClampToInt(rect.y + half),
                ClampToInt(rect.width - shrink), ClampToInt(rect.height - shrink));
}

void NativeRenderer::DoDrawRect(wxDC* dc, wxRect rect, wxColour colour) {
  FillRectangle(dc, rect, wxBrush(colour, wxBRUSHSTYLE_SOLID));
}

void NativeRenderer::FillRectangle(wxDC* dc, const wxRect& rect, const wxBrush& brush) {
  if (!dc) return;
  wxDCBrushChanger useBrush(*dc, brush);
  wxDCPenChanger usePen(*dc, *wxTRANSPARENT_PEN);
  dc->DrawRectangle(rect);
}

// The toolkit's label drawing breaks the text at line ends and aligns every line, so labels
// arrive here whole.
void NativeRenderer::DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour,
                                 wxRect rect, int alignment, bool scale, wxColour background) {
  if (!dc) return;
  // The toolkit asserts on text sized or drawn in no font: a label without one is written in
  // the window's, the font MeasureText measures it with.
  if (!font.IsOk()) font = GetParent() ? GetParent()->GetFont() : *wxNORMAL_FONT;
  if (scale) font = GetScaledFont(font, text, rect.GetTopLeft());
  if (background.IsOk()) {
    // Through the public DrawRect, so a subclass sees the box as a rectangle of its own.
    DrawRect(dc, wxRect(GetTextLocation(font, text, rect, alignment), MeasureText(text, font)),
             background);
  }
  wxDCTextColourChanger useForeground(*dc, textColour);
  wxDCTextBgColourChanger useTextBackground(*dc, wxColour(0, 0, 0, 0));
  wxDCTextBgModeChanger useMode(*dc, wxTRANSPARENT);
  wxDCFontChanger useFont(*dc, font);
  dc->DrawLabel(text, wxNullBitmap, rect, alignment, -1);
}

// ---- Back-end switches ----------------------------------------------------------------------

// The next back-end may not paint the whole window at once; the last software frame must not
// stay visible under it.
void NativeRenderer::CopySettings(RendererBase* target) {
  RendererBase::CopySettings(target);
  wxWindow* parent = GetParent();
  if (!parent || !parent->IsShownOnScreen()) return;
  wxClientDC dc(parent);
  ClearToBackground(dc, *parent);
}

// ---- Raw bitmap copy ------------------------------------------------------------------------

bool NativeRenderer::CopyToBitmap(wxImage& image) {
  if (!image.IsOk()) return false;
  if (!m_bitmap.IsOk() || m_bitmap.GetSize() != image.GetSize()) {
    m_bitmap.Create(image.GetWidth(), image.GetHeight(), 24);
  }
  if (!m_bitmap.IsOk()) return false;
  wxAlphaPixelData pixels(m_bitmap);
  if (!pixels) return false;
  CopyRawRows(image.GetData(), image.GetWidth(), image.GetHeight(), pixels.GetPixels().m_ptr,
              pixels.GetRowStride());
  return true;
}

void NativeRenderer::CopyRawRows(const unsigned char* source, int width, int height,
                                 unsigned char* destination, int stride) {
  const size_t rowBytes = static_cast<size_t>(width) * 3;
  for (int row = 0; row < height; ++row) {
    std::memcpy(destination + static_cast<ptrdiff_t>(row) * stride, source + row * rowBytes,
                rowBytes);
  }
}
