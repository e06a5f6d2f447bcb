// RendererBase: frame-buffer bookkeeping, geometry, the paint sequence, the overlay drawing
// front and the description registry shared by every back-end.
#include "RendererBase.h"

#include <algorithm>
#include <climits>
#include <map>
#include <new>

#include <wx/dcclient.h>
#include <wx/tokenzr.h>
#include <wx/window.h>

#include "RendererLog.h"

namespace {

// Descriptions per render mode, shared by every renderer of the process.
std::map<RenderMode, wxString> RenderDescs;

// Where text `extent` long starts along a side of `length` from `start`: against the far end,
// in the middle (the division truncating toward zero) or at the start. Computed wide and
// clamped: a rectangle near the int limits must not overflow.
int AlignedStart(int start, int length, int extent, bool farEnd, bool middle) {
  const long long room = static_cast<long long>(length) - extent;
  if (farEnd) return RendererBase::ClampToInt(start + room);
  if (middle) return RendererBase::ClampToInt(start + room / 2);
  return start;
}

}  // namespace

RendererBase::RendererBase(wxWindow* parent)
    : m_width(0),
      m_height(0),
      m_pixelFormat(PIXEL_FORMAT_NONE),
      m_renderedPixelFormat(PIXEL_FORMAT_NONE),
      m_renderClientWidth(0),
      m_renderClientHeight(0),
      m_destinationRect(0, 0, 0, 0),
      m_hasFrame(false),
      m_opacity(255),
      m_drawOverlaysHandler(nullptr),
      m_parent(parent),
      m_initialised(false) {
  m_ptzType.Reset(std::make_unique<NormalDigitalPTZ>());
}

RendererBase::~RendererBase() {
  DeleteImages();
  m_ptzType.Reset(nullptr);
}

void RendererBase::DeleteImages() {
  for (IRendererImage* image : m_images) delete image;
  m_images.clear();
}

// ---- Simple queries and defaults -------------------------------------------------------------

wxWindow* RendererBase::GetParent() const { return m_parent; }
bool RendererBase::RequiresDC() { return false; }
bool RendererBase::IsPixelFormatSupported(int) { return false; }
bool RendererBase::IsHardwareDecompSupported() { return false; }
int RendererBase::GetPixelFormat() { return m_pixelFormat; }
bool RendererBase::HasFrame() { return m_hasFrame; }
void RendererBase::SetVideoOutput(IVideoOutput*) {}
IVideoOutput* RendererBase::GetVideoOutput() { return nullptr; }
bool RendererBase::BeginHardwareImage(int, int, int, HardwareImageInfo&) { return false; }
void RendererBase::EndHardwareImage(HardwareImageInfo&) {}
bool RendererBase::GetIsSupported() { return true; }
bool RendererBase::IsMultiLineDrawLabelSupported() { return false; }
void RendererBase::OnBeforeDraw(wxDC*) {}
void RendererBase::OnAfterDraw(wxDC*) {}
void RendererBase::OnInit() {}
void RendererBase::OnFrame() {}

bool RendererBase::IsModeSupported(int width, int height, int format) {
  if (width == m_width && height == m_height && format == m_pixelFormat) return true;
  return IsPixelFormatSupported(format);
}

int RendererBase::GetPreferredPixelFormat(int format) {
  if (IsPixelFormatSupported(format)) return format;
  if (IsRgbPixelFormat(format)) {
    for (int candidate : kRgbFallbackFormats) {
      if (IsPixelFormatSupported(candidate)) return candidate;
    }
  }
  for (int candidate : kPreferredFormats) {
    if (IsPixelFormatSupported(candidate)) return candidate;
  }
  return PIXEL_FORMAT_NONE;
}

bool RendererBase::ClearFrame() {
  const bool hadFrame = HasFrame();
  if (hadFrame) m_hasFrame = false;
  return hadFrame;
}

// ---- Frame buffer ---------------------------------------------------------------------------

// A side below 1 is refused as well as 0: no back-end can lay out a frame of negative size,
// and its negative pitch would send the decoder's writes before the buffer.
bool RendererBase::GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                                  int* pitches) {
  if (width < 1 || height < 1) return false;
  if (!IsModeSupported(width, height, format)) return false;
  m_width = width;
  m_height = height;
  m_pixelFormat = format;
  std::fill(planes, planes + 3, nullptr);
  std::fill(pitches, pitches + 3, 0);
  return true;
}

// Only tells whether a single-plane buffer is available: the plane address the back-end
// produced stays in the local triple and is not handed back.
bool RendererBase::GetFrameBuffer(int width, int height, int format, unsigned char* buffer,
                                  int pitch) {
  unsigned char* planes[3] = {buffer, nullptr, nullptr};
  int pitches[3] = {pitch, 0, 0};
  return GetFrameBuffer(width, height, format, planes, pitches) && pitches[1] == 0 &&
         pitches[2] == 0;
}

bool RendererBase::FlushFrameBuffer(unsigned char**, int*) {
  m_hasFrame = true;
  OnFrame();
  return true;
}

bool RendererBase::FlushFrameBuffer(unsigned char* buffer, int pitch) {
  unsigned char* planes[3] = {buffer, nullptr, nullptr};
  int pitches[3] = {pitch, 0, 0};
  return FlushFrameBuffer(planes, pitches);
}

void RendererBase::CancelFrameBuffer(unsigned char** planes, int* pitches) {
  std::fill(planes, planes + 3, nullptr);
  std::fill(pitches, pitches + 3, 0);
}

void RendererBase::ResizeBuffer(unsigned long size) { m_frameBuffer.resize(size, 0); }

void RendererBase::ReduceBuffer(unsigned long size) {
  std::vector<unsigned char>(size, 0).swap(m_frameBuffer);
}

// Sized and checked before the base request stores the triple, so that a refusal changes
// nothing. Memory that cannot be had is a failed request, never an exception out of the
// library.
bool RendererBase::GetMemoryFrameBuffer(int width, int height, int format, unsigned char** planes,
                                        int* pitches) {
  const CPixelLayout layout(format, width, height);
  if (!layout.IsValid() || !IsModeSupported(width, height, format)) return false;
  try {
    ResizeBuffer(static_cast<unsigned long>(layout.GetTotalBytes()));
  } catch (const std::bad_alloc&) {
    return false;
  }
  if (!RendererBase::GetFrameBuffer(width, height, format, planes, pitches)) return false;
  layout.SplitBuffer(m_frameBuffer.data(), planes, pitches);
  return true;
}

// ---- Aspect ratio, sizes and PTZ ------------------------------------------------------------

void RendererBase::SetIgnoreAspectRatio(bool ignore) { m_normalPtz.SetIgnoreAspectRatio(ignore); }
bool RendererBase::GetIgnoreAspectRatio() { return m_normalPtz.GetIgnoreAspectRatio(); }
void RendererBase::SetAspectRatio(float ratio) { m_normalPtz.SetAspectRatio(ratio); }
float RendererBase::GetAspectRatio() { return m_normalPtz.GetAspectRatio(); }
void RendererBase::ResetAspectRatio() { m_normalPtz.SetAspectRatio(0.0f); }

float RendererBase::GetCurrentAspectRatio() {
  return HasFrame() ? m_normalPtz.GetCurrentAspectRatio() : 0.0f;
}

void RendererBase::SetVideoSize(wxSize size) { m_normalPtz.SetSize(size.x, size.y); }

wxSize RendererBase::GetVideoSize() {
  wxSize size;
  m_normalPtz.GetSize(size.x, size.y);
  return size;
}

CDigitalPTZType& RendererBase::GetPtzType() { return m_ptzType; }

void RendererBase::SetDestinationRect(wxRect rect) { m_destinationRect = rect; }
wxRect RendererBase::GetDestinationRect() { return m_destinationRect; }
void RendererBase::ResetDestinationRect() { m_destinationRect = wxRect(0, 0, 0, 0); }

wxSize RendererBase::GetRenderClientSize() {
  if (m_renderClientWidth >= 1 || m_renderClientHeight >= 1) {
    return wxSize(m_renderClientWidth, m_renderClientHeight);
  }
  return m_parent ? m_parent->GetClientSize() : wxSize(0, 0);
}

void RendererBase::GetRenderClientSize(int& width, int& height) {
  const wxSize size = GetRenderClientSize();
  width = size.x;
  height = size.y;
}

NormalDigitalPTZ* RendererBase::GetNormalPtz() {
  const wxSize video = GetVideoSize();
  if (video.x == 0 || video.y == 0) m_normalPtz.SetSize(m_width, m_height);
  if (m_destinationRect.width != 0 && m_destinationRect.height != 0) {
    m_normalPtz.SetClientSize(m_destinationRect.width, m_destinationRect.height);
  } else {
    const wxSize client = GetRenderClientSize();
    m_normalPtz.SetClientSize(client.x, client.y);
  }
  return &m_normalPtz;
}

CDigitalPTZ* RendererBase::GetPtz() {
  CDigitalPTZ* ptz = m_ptzType.Get();
  if (ptz && ptz->IsActive()) return ptz;
  return GetNormalPtz();
}

void RendererBase::GetSubImageRect(int width, int height, wxRect& destination, wxRect& source,
                                   bool force) {
  NormalDigitalPTZ* normal = GetNormalPtz();
  GetPtz()->IsActive();  // the answer is not needed; the query may update the PTZ object
  const bool videoSized = wxSize(width, height) == GetVideoSize();
  if (normal->GetZoomActive() && videoSized && (!normal->slowPath || force)) {
    normal->GetAdjustedRects(source.x, source.y, source.width, source.height, destination.x,
                             destination.y, destination.width, destination.height);
  } else {
    source = wxRect(0, 0, width, height);
    // A frame the decoder already cropped and scaled keeps its own shape.
    const float aspect = normal->slowPath && !force && !videoSized
                             ? static_cast<float>(width) / static_cast<float>(height)
                             : normal->GetCurrentAspectRatio();
    normal->GetDestinationRect(aspect, destination.x, destination.y, destination.width,
                               destination.height);
  }
  if (m_destinationRect.width != 0 || m_destinationRect.height != 0) {
    destination.x = ClampToInt(static_cast<long long>(destination.x) + m_destinationRect.x);
    destination.y = ClampToInt(static_cast<long long>(destination.y) + m_destinationRect.y);
  }
}

void RendererBase::GetSubImageRect(wxRect& destination, wxRect& source, bool force) {
  GetSubImageRect(m_width, m_height, destination, source, force);
}

wxRect RendererBase::GetAdjustedPtzSourceRect() {
  const wxSize video = GetVideoSize();
  wxRect destination;
  wxRect source;
  GetSubImageRect(video.x, video.y, destination, source, true);
  return source;
}

int RendererBase::ClampToInt(long long value) {
  return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

wxRect RendererBase::NormalizeRect(wxRect rect) {
  if (rect.width < 0) {
    rect.x += rect.width;
    rect.width = -rect.width;
  }
  if (rect.height < 0) {
    rect.y += rect.height;
    rect.height = -rect.height;
  }
  return rect;
}

void RendererBase::CopySettings(RendererBase* target) {
  target->SetIgnoreAspectRatio(GetIgnoreAspectRatio());
  target->SetAspectRatio(GetAspectRatio());
  target->SetDestinationRect(GetDestinationRect());
  target->SetVideoSize(GetVideoSize());
  target->SetDrawOverlaysHandler(m_drawOverlaysHandler);
  target->SetOpacity(GetOpacity());

  NormalDigitalPTZ* from = GetNormalPtz();
  NormalDigitalPTZ* to = target->GetNormalPtz();
  int x, y, width, height;
  from->GetSourceRect(x, y, width, height);
  to->SetSourceRect(x, y, width, height);
  to->SetZoomActive(from->GetZoomActive());

  target->GetPtzType().Set(GetPtzType());

  CDigitalPTZ* ptzFrom = GetPtz();
  CDigitalPTZ* ptzTo = target->GetPtz();
  float pan, tilt, zoom;
  ptzFrom->GetPanTiltZoom(pan, tilt, zoom);
  ptzTo->SetPanTiltZoom(pan, tilt, zoom);
  ptzTo->SetZoomActive(ptzFrom->GetZoomActive());
  ptzTo->SetMaxZoom(ptzFrom->GetMaxZoom());
  // The host's switch goes too: a host that zooms through a back-end's own PTZ (instead of
  // lending one) would otherwise see its view jump back to the whole picture at every change
  // of back-end, the automatic fallback to software included.
  ptzTo->enabled = ptzFrom->enabled;
}

// ---- Paint sequence and images --------------------------------------------------------------

void RendererBase::Render(wxDC* dc) {
  if (!m_initialised) {
    m_initialised = true;
    OnInit();
  }
  // Without a window there is nothing to draw into: the back-ends clear to the window's
  // background, place a video output by its screen position and measure text on it.
  if (!m_parent) return;
  if (dc) {
    const wxSize size = dc->GetSize();
    m_renderClientWidth = size.x;
    m_renderClientHeight = size.y;
  } else if (RequiresDC()) {
    return;
  }
  OnBeforeDraw(dc);
  DrawFrame(dc);
  DrawOverlays(dc);
  OnAfterDraw(dc);
  m_renderedPixelFormat = m_pixelFormat;
  m_renderClientWidth = 0;
  m_renderClientHeight = 0;
}

void RendererBase::SetDrawOverlaysHandler(IRendererDrawOverlays* handler) {
  m_drawOverlaysHandler = handler;
}

void RendererBase::DrawOverlays(wxDC* dc) {
  if (m_drawOverlaysHandler) m_drawOverlaysHandler->RendererDrawOverlays(this, dc);
}

unsigned char RendererBase::GetOpacity() const { return m_opacity; }
void RendererBase::SetOpacity(unsigned char opacity) { m_opacity = opacity; }

IRendererImage* RendererBase::CreateImage(const wxImage& image) {
  IRendererImage* created = DoCreateImage(image);
  m_images.push_back(created);
  return created;
}

void RendererBase::DeleteImage(IRendererImage* image) {
  const auto found = std::find(m_images.begin(), m_images.end(), image);
  if (found == m_images.end()) return;
  delete image;
  m_images.erase(found);
}

// ---- Overlay drawing front ------------------------------------------------------------------

void RendererBase::DrawRect(wxDC* dc, wxRect rect, wxColour colour) {
  if (GetOpacity() < 255) colour = AdjustAlpha(colour, GetOpacity());
  DoDrawRect(dc, rect, colour);
}

void RendererBase::DrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) {
  if (GetOpacity() < 255) colour = AdjustAlpha(colour, GetOpacity());
  DoDrawRectOutline(dc, rect, colour, width);
}

void RendererBase::DrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) {
  if (GetOpacity() < 255) colour = AdjustAlpha(colour, GetOpacity());
  DoDrawLine(dc, from, to, colour, width);
}

// Only the text fades with the opacity; the background box is passed on as the host gave it.
void RendererBase::DrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour,
                             wxRect rect, int alignment, bool scale, wxColour background) {
  if (GetOpacity() < 255) textColour = AdjustAlpha(textColour, GetOpacity());
  if (IsMultiLineDrawLabelSupported()) {
    DoDrawLabel(dc, text, font, textColour, rect, alignment, scale, background);
    return;
  }
  // Runs of line breaks count as one, so no line is empty.
  const wxArrayString lines = wxStringTokenize(text, "\n", wxTOKEN_DEFAULT);
  if (lines.size() > 1 && (alignment & (wxALIGN_BOTTOM | wxALIGN_CENTER_VERTICAL))) {
    DrawLinesAsABlock(dc, lines, font, textColour, rect, alignment, scale, background);
    return;
  }
  // Each line is aligned by itself inside what the lines above left of the rectangle.
  wxRect remaining = rect;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) {
      const int above = MeasureText(lines[i - 1], font).y;
      remaining.y = ClampToInt(static_cast<long long>(remaining.y) + above);
      remaining.height = ClampToInt(static_cast<long long>(remaining.height) - above);
    }
    DoDrawLabel(dc, lines[i], font, textColour, remaining, alignment, scale, background);
  }
}

// Aligned one by one inside what the lines above left, lines centred vertically would overlap
// by half a line and bottom-aligned ones would all stand on the bottom line. So such lines are
// stacked as one block, the height of them all, which the vertical alignment places in the
// rectangle; each line gets a rectangle of its own height inside the block (where any vertical
// alignment puts it at the top) and keeps the horizontal alignment.
void RendererBase::DrawLinesAsABlock(wxDC* dc, const wxArrayString& lines, const wxFont& font,
                                     const wxColour& textColour, const wxRect& rect, int alignment,
                                     bool scale, const wxColour& background) {
  std::vector<int> heights;
  long long block = 0;
  for (const wxString& line : lines) {
    heights.push_back(MeasureText(line, font).y);
    block += heights.back();
  }
  long long top = static_cast<long long>(rect.y) + rect.height - block;
  if (!(alignment & wxALIGN_BOTTOM)) {
    top = rect.y + (static_cast<long long>(rect.height) - block) / 2;
  }
  for (size_t i = 0; i < lines.size(); ++i) {
    const wxRect own(rect.x, ClampToInt(top), rect.width, heights[i]);
    DoDrawLabel(dc, lines[i], font, textColour, own, alignment, scale, background);
    top += heights[i];
  }
}

wxSize RendererBase::MeasureText(const wxString& text, wxFont font) {
  if (!m_parent) return wxSize(0, 0);
  wxWindowDC dc(m_parent);
  wxCoord width = 0;
  wxCoord height = 0;
  dc.GetTextExtent(text, &width, &height, nullptr, nullptr, font.IsOk() ? &font : nullptr);
  return wxSize(width, height);
}

int RendererBase::GetLineHeight(wxFont font) { return MeasureText("A", font).y; }

wxPoint RendererBase::GetTextLocation(wxFont font, const wxString& text, wxRect rect,
                                      int alignment) {
  if (alignment == 0) return wxPoint(rect.x, rect.y);
  const wxSize size = MeasureText(text, font);
  return wxPoint(AlignedStart(rect.x, rect.width, size.x, alignment & wxALIGN_RIGHT,
                              alignment & wxALIGN_CENTER_HORIZONTAL),
                 AlignedStart(rect.y, rect.height, size.y, alignment & wxALIGN_BOTTOM,
                              alignment & wxALIGN_CENTER_VERTICAL));
}

// The largest size at which the text fits the render client area from `origin`, never below
// 1 point. The design shrinks a point at a time, measuring at every size; a host's 60000-point
// font, or an origin outside the tile where nothing fits, then held a paint for minutes. The
// size is bisected instead (FitFont): the same answer, since a smaller size never measures
// wider or taller, in a few dozen measurements at most.
wxFont RendererBase::GetScaledFont(wxFont font, const wxString& text, wxPoint origin) {
  return FitFont(font, origin, GetRenderClientSize(),
                 [this, &text](const wxFont& sized) { return MeasureText(text, sized); });
}

wxFont RendererBase::FitFont(wxFont font, wxPoint origin, wxSize client,
                             const std::function<wxSize(const wxFont&)>& measure) {
  if (!font.IsOk() || font.GetPointSize() <= 1) return font;
  const auto fits = [&font, origin, client, &measure](int points) {
    wxFont sized = font;
    sized.SetPointSize(points);
    const wxSize extent = measure(sized);
    // Summed wider: an origin near the int limit must not wrap round and seem to fit.
    return static_cast<long long>(origin.x) + extent.x <= client.x &&
           static_cast<long long>(origin.y) + extent.y <= client.y;
  };
  if (fits(font.GetPointSize())) return font;
  int low = 1;  // the answer when no size fits
  int high = font.GetPointSize() - 1;
  while (low < high) {
    const int middle = low + (high - low + 1) / 2;
    if (fits(middle)) {
      low = middle;
    } else {
      high = middle - 1;
    }
  }
  font.SetPointSize(low);
  return font;
}

int RendererBase::OsdPosToAlignment(int position) {
  switch (position) {
    case 2: return wxALIGN_CENTER_HORIZONTAL;
    case 3: return wxALIGN_RIGHT;
    case 4: return wxALIGN_CENTER_VERTICAL;
    case 5: return wxALIGN_CENTER;
    case 6: return wxALIGN_CENTER_VERTICAL | wxALIGN_RIGHT;
    case 7: return wxALIGN_BOTTOM;
    case 8: return wxALIGN_BOTTOM | wxALIGN_CENTER_HORIZONTAL;
    case 9: return wxALIGN_BOTTOM | wxALIGN_RIGHT;
    default: return 0;  // 1 and anything else: top left
  }
}

wxColour RendererBase::ChangeAlpha(const wxColour& colour, const unsigned char& alpha) {
  if (!colour.IsOk()) return colour;
  return wxColour(colour.Red(), colour.Green(), colour.Blue(), alpha);
}

wxColour RendererBase::AdjustAlpha(const wxColour& colour, const unsigned char& opacity) {
  if (!colour.IsOk()) return colour;
  return ChangeAlpha(colour, static_cast<unsigned char>(colour.Alpha() * opacity / 255));
}

// ---- Pixel copies ---------------------------------------------------------------------------

void RendererBase::CopyImage(const wxImage& image, unsigned char* destination, int pitch,
                             bool flag) {
  if (!image.IsOk()) return;
  const int width = image.GetWidth();
  const int height = image.GetHeight();
  if (height < 1) return;
  const unsigned char* source = image.GetData();
  const unsigned char* alpha = image.HasAlpha() ? image.GetAlpha() : nullptr;
  const size_t sourceBytes = static_cast<size_t>(width) * height * 3;
  const size_t first = flag ? 1 : 0;
  const size_t third = flag ? 3 : 2;
  for (int y = 0; y < height; ++y) {
    unsigned char* out = destination + static_cast<ptrdiff_t>(y) * pitch;
    for (int x = 0; x < width; ++x, out += 4) {
      const size_t pixel = static_cast<size_t>(y) * width + x;
      const size_t at = pixel * 3;
      out[0] = source[at + first];
      out[1] = source[at + 1];
      // Under the flag the third byte is the next pixel's first; past the last pixel there is
      // none, and it reads as 0 rather than beyond the image.
      out[2] = at + third < sourceBytes ? source[at + third] : 0;
      out[3] = alpha ? alpha[pixel] : 255;
    }
  }
}

void RendererBase::CopyBitmap(wxBitmap bitmap, unsigned char* destination, int pitch, bool flag) {
  CopyImage(bitmap.ConvertToImage(), destination, pitch, flag);
}

// ---- Description registry -------------------------------------------------------------------

void RendererBase::AppendRendererDesc(RenderMode mode, const wxString& text) {
  LogVerbose("renderer/RendererBase", "AppendRendererDesc", text);
  wxString& entry = RenderDescs[mode];
  if (!entry.empty()) entry += "\n";
  entry += text;
}

wxString& RendererBase::GetRendererDesc(RenderMode mode) { return RenderDescs[mode]; }

void RendererBase::ClearRendererDesc(RenderMode mode) { RenderDescs.erase(mode); }
