// Renderer: back-end selection, forwarding, the frame pipeline, the software fallback and the
// host images, for one tile window.
#include "Renderer.h"

#include <cfloat>
#include <climits>
#include <cmath>

#include <decompressor/CDecompressor.h>
#include <decompressor/IVideoOutput.h>
#include <wx/app.h>
#include <wx/recguard.h>
#include <wx/window.h>

#include "NativeRenderer.h"
#include "OpenGLRenderer.h"
#include "RendererLog.h"
#include "VideoOutRenderer.h"

namespace {

constexpr const char* kSource = "renderer/Renderer";

// Clears bit 0 of a size, so the decoder's 4:2:x output has whole chroma samples.
int TruncateToEven(int value) { return value & ~1; }

}  // namespace

// ---- RendererImage and RendererObject --------------------------------------------------------

// The toolkit asserts when an invalid image is asked for its size: such an image is kept with
// size 0 x 0 (and is never drawn, as IsOk says).
RendererImage::RendererImage(const wxImage& image)
    : m_size(image.IsOk() ? image.GetWidth() : 0, image.IsOk() ? image.GetHeight() : 0),
      m_image(image) {}

RendererImage::~RendererImage() {
  for (auto& [backend, image] : m_backendImages) backend->DeleteImage(image);
}

bool RendererImage::IsOk() const { return m_image.IsOk(); }
wxSize RendererImage::GetSize() const { return m_size; }

RendererObject::RendererObject(IRenderer* object) : m_object(object) {}

RendererObject::~RendererObject() {
  delete m_object;
  m_object = nullptr;
}

// ---- Construction and back-end selection -----------------------------------------------------

Renderer::Renderer(wxWindow* parent, RenderMode mode)
    : m_renderer(nullptr),
      m_primaryRenderer(nullptr),
      m_parent(parent),
      m_renderMode(RENDER_MODE_AUTO),
      m_primaryMode(RENDER_MODE_AUTO),
      m_lastWidth(0),
      m_lastHeight(0),
      m_lastFormat(PIXEL_FORMAT_NONE),
      m_lastHardware(false),
      m_drawOverlaysHandler(nullptr),
      m_maxHardwareWidth(0),
      m_maxHardwareHeight(0),
      m_softwareScaleThreshold(0.2f) {
  SetRenderMode(mode);
}

Renderer::~Renderer() {
  for (RendererImage* image : m_images) delete image;
  m_images.clear();
  if (IsInSoftwareFallback()) delete m_primaryRenderer;
  delete m_renderer;
  m_renderer = nullptr;
  m_primaryRenderer = nullptr;
}

bool Renderer::SetRenderMode(RenderMode mode) {
  if (mode == m_renderMode && m_renderer) return true;
  m_renderMode = mode;
  if (IsInSoftwareFallback()) {
    DeleteImages(m_primaryRenderer);
    delete m_primaryRenderer;
    m_primaryRenderer = nullptr;
  }
  IRenderer* newRenderer = CreateRenderer(mode);
  newRenderer->SetDrawOverlaysHandler(this);
  if (m_renderer) CopySettings(m_renderer, newRenderer);
  DeleteImages(m_renderer);
  ScheduleDeletion(m_renderer);
  m_renderer = newRenderer;
  m_primaryRenderer = newRenderer;
  return mode == RENDER_MODE_AUTO || mode == m_renderMode;
}

IRenderer* Renderer::CreateRenderer(RenderMode mode) {
  std::vector<int> candidates;
  if (mode == RENDER_MODE_AUTO) {
    candidates = {RENDER_MODE_RESERVED, RENDER_MODE_OPENGL, RENDER_MODE_SOFTWARE};
  } else if (mode == RENDER_MODE_SOFTWARE) {
    candidates = {RENDER_MODE_SOFTWARE};
  } else {
    candidates = {mode, RENDER_MODE_SOFTWARE};
  }
  if (CDecompressor::HasVideoOutput()) candidates = {RENDER_MODE_SOFTWARE};

  for (int candidate : candidates) {
    m_primaryMode = candidate;
    if (candidate == RENDER_MODE_SOFTWARE) {
      if (CDecompressor::HasVideoOutput()) return new VideoOutRenderer(m_parent);
      return new NativeRenderer(m_parent);
    }
    if (candidate != RENDER_MODE_OPENGL || !OpenGLRenderer::m_isSupported) continue;
    const bool automatic = mode == RENDER_MODE_AUTO;
    if (automatic && !OpenGLRenderer::m_isRecommended) continue;
    // A GL canvas is a child window: without a parent there is nothing to put it in.
    if (!m_parent) continue;
    auto* gl = new OpenGLRenderer(m_parent);
    if ((!automatic || OpenGLRenderer::m_isRecommended) && gl->GetIsSupported()) return gl;
    delete gl;
  }
  return nullptr;
}

bool Renderer::IsRenderModeSupported(RenderMode mode) {
  switch (mode) {
    case RENDER_MODE_AUTO:
    case RENDER_MODE_SOFTWARE: return true;
    case RENDER_MODE_OPENGL:
      return !CDecompressor::HasVideoOutput() && OpenGLRenderer::m_isSupported;
    default: return false;
  }
}

wxString Renderer::GetRendererDesc(RenderMode mode) { return RendererBase::GetRendererDesc(mode); }

void Renderer::CopySettings(IRenderer* from, IRenderer* to) {
  auto* source = dynamic_cast<RendererBase*>(from);
  auto* target = dynamic_cast<RendererBase*>(to);
  if (source && target) source->CopySettings(target);
}

// The toolkit deletes the back-end at its next idle time, so a paint still running on it in
// the current event completes first. Without an application object there is no idle time to
// wait for, and the back-end goes at once.
void Renderer::ScheduleDeletion(IRenderer* renderer) {
  auto* object = new RendererObject(renderer);
  if (wxTheApp) {
    wxTheApp->ScheduleForDestruction(object);
  } else {
    delete object;
  }
}

// ---- Overlay relay ---------------------------------------------------------------------------

void Renderer::SetDrawOverlaysHandler(IRendererDrawOverlays* handler) {
  m_drawOverlaysHandler = handler;
}

void Renderer::RendererDrawOverlays(IRenderer* renderer, wxDC* dc) {
  if (m_drawOverlaysHandler) m_drawOverlaysHandler->RendererDrawOverlays(renderer, dc);
}

// ---- Frame pipeline --------------------------------------------------------------------------

bool Renderer::IsPtzEngaged(CDigitalPTZ* ptz) { return ptz && ptz->IsActive() && ptz->enabled; }

bool Renderer::IsWithinHardwareLimit(int width, int height) const {
  return m_maxHardwareWidth < 1 || (width <= m_maxHardwareWidth && height <= m_maxHardwareHeight);
}

void Renderer::UpdateLastFormat(int width, int height, int format, bool& hardware, bool& changed) {
  hardware = IsWithinHardwareLimit(width, height) &&
             m_primaryRenderer->IsModeSupported(width, height, format);
  if (width != m_lastWidth || height != m_lastHeight || format != m_lastFormat) {
    changed = true;
  } else {
    changed = m_lastHardware != hardware;
  }
  m_lastWidth = width;
  m_lastHeight = height;
  m_lastFormat = format;
  m_lastHardware = hardware;
}

// The areas are multiplied in 64 bits: a host's sizes near the int limit would overflow the
// int products, and for every size that fits the ratio is the same.
bool Renderer::ShouldSoftwareScale(int srcWidth, int srcHeight, int dstWidth, int dstHeight) {
  CDigitalPTZ* ptz = GetPtz();
  if (ptz && ptz->IsActive()) return true;
  const long long destination = static_cast<long long>(dstWidth) * dstHeight;
  const long long source = static_cast<long long>(srcWidth) * srcHeight;
  return m_softwareScaleThreshold >= static_cast<float>(destination) / static_cast<float>(source);
}

bool Renderer::NegotiateFormat(int& width, int& height, int& format, wxRect& srcRect,
                               CDecompressor* decoder, CDigitalPTZ* ptz) {
  const int decoderFormat = decoder ? decoder->GetHardwarePixelFormat() : format;
  const bool decoderHw = decoder && decoder->IsHardwareDecoding();
  const bool hwDecomp = m_renderer->IsHardwareDecompSupported();
  const bool fast = decoderHw && hwDecomp && !IsPtzEngaged(ptz);
  if (fast) format = decoderFormat;
  const int requestedFormat = format;
  format = m_primaryRenderer->GetPreferredPixelFormat(requestedFormat);
  bool fastPath = fast && decoderFormat == format;

  bool hwOk = false;
  bool changed = false;
  UpdateLastFormat(width, height, format, hwOk, changed);
  if (changed && decoderHw) {
    LogVerbose(
        kSource, "NegotiateFormat",
        wxString::Format("Using %s path for hwdecomp to renderer.", fastPath ? "fast" : "slow"));
  }

  m_renderer->SetVideoSize(wxSize(width, height));
  NormalDigitalPTZ* normalPtz = m_renderer->GetNormalPtz();
  if (normalPtz) normalPtz->slowPath = false;
  wxRect target;
  m_renderer->GetSubImageRect(width, height, target, srcRect, false);

  if (!fastPath) {
    hwOk = hwOk && !ShouldSoftwareScale(width, height, target.width, target.height);
  } else if (decoder && decoder->RequiresSoftwarePath()) {
    hwOk = false;
  }
  const bool software = IsInSoftwareFallback() || m_primaryMode == RENDER_MODE_SOFTWARE;

  // Road a: the primary back-end takes the whole frame and scales it itself.
  if (hwOk && (changed || !software)) {
    srcRect = wxRect(0, 0, width, height);
    SoftwareFallback(false);
    return false;
  }

  srcRect.width = TruncateToEven(srcRect.width);
  srcRect.height = TruncateToEven(srcRect.height);
  target.width = TruncateToEven(target.width);
  target.height = TruncateToEven(target.height);

  // Road b: scaled on the processor to the size shown, still on the primary back-end when it
  // takes that size.
  if (!hwOk && (changed || !software)) {
    width = target.width;
    height = target.height;
    if (IsWithinHardwareLimit(width, height) &&
        m_primaryRenderer->IsModeSupported(width, height, format)) {
      SoftwareFallback(false);
      if (changed) {
        fastPath = false;
        LogVerbose(kSource, "NegotiateFormat",
                   wxString::Format("Performing software scaling from %dx%d to %dx%d.", m_lastWidth,
                                    m_lastHeight, width, height));
      }
      normalPtz = m_renderer->GetNormalPtz();
      if (normalPtz) normalPtz->slowPath = !fastPath;
      return IsInSoftwareFallback();
    }
    SoftwareFallback(true);
  }

  // Road c: the software back-end, at the size shown.
  width = target.width;
  height = target.height;
  format = m_renderer->GetPreferredPixelFormat(requestedFormat);
  normalPtz = m_renderer->GetNormalPtz();
  if (normalPtz) normalPtz->slowPath = !fastPath;
  return IsInSoftwareFallback();
}

bool Renderer::CopyFrame(CDecompressor& decoder, int width, int height, int format, wxRect srcRect,
                         CDigitalPTZ* ptz) {
  static wxRecursionGuardFlag guardFlag;
  wxRecursionGuard guard(guardFlag);
  if (guard.IsInside()) return false;

  if (!GetVideoOutput() && CDecompressor::HasVideoOutput()) {
    IVideoOutput* output = CDecompressor::CreateVideoOutput();
    SetVideoOutput(output);
    // A back-end without video-output support ignores the output (a factory registered after
    // this facade chose its back-end): it would be lost on every frame, so it goes back.
    if (GetVideoOutput() != output) CDecompressor::DeleteVideoOutput(output);
  }
  if (PresentThroughVideoOutput(decoder, width, height, format, srcRect, ptz)) return true;
  bool delivered = false;
  if (CopyThroughHardwareImage(decoder, width, height, format, srcRect, ptz, delivered)) {
    return delivered;
  }
  return CopyThroughFrameBuffer(decoder, width, height, format, srcRect, ptz);
}

bool Renderer::PresentThroughVideoOutput(CDecompressor& decoder, int width, int height, int format,
                                         const wxRect& srcRect, CDigitalPTZ* ptz) {
  IVideoOutput* videoOutput = GetVideoOutput();
  if (!videoOutput || IsPtzEngaged(ptz)) return false;
  HardwareImageInfo info{};
  // Begin and End at once let the back-end size itself to the frame.
  if (m_renderer->BeginHardwareImage(width, height, format, info)) {
    m_renderer->EndHardwareImage(info);
  }
  videoOutput->SetOutputRect(srcRect.x, srcRect.y, srcRect.width, srcRect.height);
  decoder.RenderToVideoOutput(videoOutput);
  return true;
}

bool Renderer::CopyThroughHardwareImage(CDecompressor& decoder, int width, int height, int format,
                                        const wxRect& srcRect, CDigitalPTZ* ptz, bool& delivered) {
  NormalDigitalPTZ* normalPtz = m_renderer->GetNormalPtz();
  const bool open = m_renderer->IsHardwareDecompSupported() && decoder.IsHardwareDecoding() &&
                    decoder.GetHardwarePixelFormat() == format && normalPtz &&
                    !normalPtz->slowPath && !IsPtzEngaged(ptz);
  if (!open) return false;
  HardwareImageInfo info{};
  info.srcX = srcRect.x;
  info.srcY = srcRect.y;
  info.srcWidth = srcRect.width;
  info.srcHeight = srcRect.height;
  if (!m_renderer->BeginHardwareImage(width, height, format, info)) return false;
  delivered = decoder.CopyToHardwareImage(info) == 0;
  m_renderer->EndHardwareImage(info);
  return true;
}

bool Renderer::CopyThroughFrameBuffer(CDecompressor& decoder, int width, int height, int format,
                                      const wxRect& srcRect, CDigitalPTZ* ptz) {
  unsigned char* planes[3] = {nullptr, nullptr, nullptr};
  int pitches[3] = {0, 0, 0};
  if (!GetFrameBuffer(width, height, format, planes, pitches)) return false;
  decoder.GetImage(planes, pitches, format, width, height, srcRect.x, srcRect.y, srcRect.width,
                   srcRect.height, ptz);
  if (FlushFrameBuffer(planes, pitches)) return true;
  // A back-end that lent its buffer but could not take the frame back (the GL upload raised an
  // error) would go on showing a stale or broken picture for as long as the frame parameters
  // stay: like a refused buffer, it hands the next frames to software.
  LogVerbose(kSource, "CopyFrame",
             "Renderer Information - Call to FlushFrameBuffer failed. Switching to software "
             "mode...");
  SoftwareFallback(true);
  return false;
}

bool Renderer::GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                              int* pitches) {
  const bool ok = m_renderer->GetFrameBuffer(width, height, format, planes, pitches);
  if (ok || width == 0 || height == 0) return ok;
  LogVerbose(kSource, "GetFrameBuffer",
             "Renderer Information - Call to GetFrameBuffer failed. Switching to software "
             "mode...");
  SoftwareFallback(true);
  return false;
}

// ---- Software fallback -----------------------------------------------------------------------

bool Renderer::IsInSoftwareFallback() { return m_renderer != m_primaryRenderer; }

void Renderer::SoftwareFallback(bool toSoftware) {
  if (IsInSoftwareFallback() == toSoftware) return;
  if (m_renderMode == RENDER_MODE_SOFTWARE) return;
  if (toSoftware) {
    if (m_primaryMode == RENDER_MODE_SOFTWARE) return;
    const int primaryMode = m_primaryMode;
    m_renderer = CreateRenderer(RENDER_MODE_SOFTWARE);
    m_primaryMode = primaryMode;
    CopySettings(m_primaryRenderer, m_renderer);
    m_primaryRenderer->ClearFrame();
  } else {
    CopySettings(m_renderer, m_primaryRenderer);
    DeleteImages(m_renderer);
    // Not deleted at once: the way back is taken inside NegotiateFormat, and a host commonly
    // holds the PTZ (or another object) the facade handed out from the software back-end
    // across that call into CopyFrame. It goes at the next idle time, like a replaced one.
    ScheduleDeletion(m_renderer);
    m_renderer = m_primaryRenderer;
  }
  ShowChildren(!toSoftware);
  LogVerbose(kSource, "SoftwareFallback",
             wxString::Format("Renderer Information - Switched to %s rendering. Resolution: "
                              "%dx%d, Format: %d",
                              toSoftware ? "software" : "hardware", m_lastWidth, m_lastHeight,
                              m_lastFormat));
}

void Renderer::ShowChildren(bool show) {
  if (!m_parent) return;
  for (wxWindow* child : m_parent->GetChildren()) child->Show(show);
}

void Renderer::ForceSoftwareMode(bool on) {
  SoftwareFallback(on);
  m_lastHardware = false;
}

bool Renderer::CheckForFallback() {
  const wxSize size = GetVideoSize();
  int width = size.GetWidth();
  int height = size.GetHeight();
  int format = GetPixelFormat();
  wxRect rect(0, 0, width, height);
  return NegotiateFormat(width, height, format, rect, nullptr, nullptr);
}

bool Renderer::CheckModeForFallback(int width, int height, int& format) {
  const int requested = format;
  format = m_primaryRenderer->GetPreferredPixelFormat(requested);
  bool hwOk = false;
  bool changed = false;
  UpdateLastFormat(width, height, format, hwOk, changed);
  m_renderer->SetVideoSize(wxSize(width, height));
  if (hwOk && changed) {
    SoftwareFallback(false);
    return IsInSoftwareFallback();
  }
  if (hwOk && !IsInSoftwareFallback()) return false;
  SoftwareFallback(true);
  format = m_renderer->GetPreferredPixelFormat(requested);
  return IsInSoftwareFallback();
}

// ---- Images ----------------------------------------------------------------------------------

IRendererImage* Renderer::CreateImage(const wxImage& image) {
  auto* created = new RendererImage(image);
  m_images.push_back(created);
  return created;
}

void Renderer::DeleteImage(IRendererImage* image) {
  for (auto it = m_images.begin(); it != m_images.end(); ++it) {
    if (*it != image) continue;
    delete *it;
    m_images.erase(it);
    return;
  }
}

void Renderer::DeleteImages(IRenderer* renderer) {
  if (!renderer) return;
  for (RendererImage* image : m_images) {
    renderer->DeleteImage(image->m_backendImages[renderer]);
    image->m_backendImages.erase(renderer);
  }
}

// Only images of this facade are drawn: any other pointer (null, or an image of another
// renderer) would be read as a RendererImage it is not.
void Renderer::DrawImage(wxDC* dc, IRendererImage* image, int x, int y) {
  RendererImage* own = nullptr;
  for (RendererImage* candidate : m_images) {
    if (candidate == image) own = candidate;
  }
  if (!own || !own->IsOk()) return;
  IRendererImage*& entry = own->m_backendImages[m_renderer];
  if (!entry) entry = m_renderer->CreateImage(own->m_image);
  m_renderer->DrawImage(dc, entry, x, y);
}

// ---- Aspect ratio ----------------------------------------------------------------------------

namespace {

// Zero within the single-precision epsilon; a value that is not a number counts as zero too.
bool IsZero(float value) { return !(std::fabs(value) > FLT_EPSILON); }

// (r x 100, 100), the product truncated toward zero and kept inside an int.
wxSize HundredthsOf(float ratio) {
  const double hundredths = std::trunc(static_cast<double>(ratio) * 100.0);
  const double clamped = std::fmax(std::fmin(hundredths, INT_MAX), INT_MIN);
  return wxSize(static_cast<int>(clamped), 100);
}

}  // namespace

wxSize Renderer::DetermineAspectRatio(const std::vector<float>& ratios, bool preferWide, int mode) {
  const wxSize wide(16, 9);
  const wxSize narrow(4, 3);
  if (ratios.size() == 1 && (mode == 0 || mode == 1)) {
    const float ratio = ratios.front();
    // An infinite ratio has no hundredths to give: it reads as no measurement, like zero.
    if (IsZero(ratio) || std::isinf(ratio) || std::fabs(ratio - 1.3333334f) <= FLT_EPSILON) {
      return narrow;
    }
    return HundredthsOf(ratio);
  }
  if (mode == 0) {
    int wideCount = 0;
    int narrowCount = 0;
    for (float ratio : ratios) {
      if (IsZero(ratio)) continue;
      if (static_cast<double>(ratio) > 1.5555555555555554) {
        ++wideCount;
      } else {
        ++narrowCount;
      }
    }
    if (wideCount > narrowCount) return wide;
    if (narrowCount > wideCount) return narrow;
  } else if (mode == 2) {
    return wide;
  } else if (mode != 1) {
    return narrow;
  }
  return preferWide ? wide : narrow;
}

// ---- Forwarded to the active back-end --------------------------------------------------------

wxWindow* Renderer::GetParent() const { return m_parent; }
bool Renderer::RequiresDC() { return m_renderer->RequiresDC(); }
bool Renderer::IsModeSupported(int width, int height, int format) {
  return m_renderer->IsModeSupported(width, height, format);
}
bool Renderer::IsPixelFormatSupported(int format) {
  return m_renderer->IsPixelFormatSupported(format);
}
bool Renderer::IsHardwareDecompSupported() { return m_renderer->IsHardwareDecompSupported(); }
int Renderer::GetPreferredPixelFormat(int format) {
  return m_renderer->GetPreferredPixelFormat(format);
}
int Renderer::GetPixelFormat() { return m_renderer->GetPixelFormat(); }
bool Renderer::ClearFrame() { return m_renderer->ClearFrame(); }
bool Renderer::HasFrame() { return m_renderer->HasFrame(); }
void Renderer::SetVideoOutput(IVideoOutput* output) { m_renderer->SetVideoOutput(output); }
IVideoOutput* Renderer::GetVideoOutput() { return m_renderer->GetVideoOutput(); }
bool Renderer::BeginHardwareImage(int width, int height, int format, HardwareImageInfo& info) {
  return m_renderer->BeginHardwareImage(width, height, format, info);
}
void Renderer::EndHardwareImage(HardwareImageInfo& info) { m_renderer->EndHardwareImage(info); }
bool Renderer::GetFrameBuffer(int width, int height, int format, unsigned char* buffer, int pitch) {
  return m_renderer->GetFrameBuffer(width, height, format, buffer, pitch);
}
bool Renderer::FlushFrameBuffer(unsigned char** planes, int* pitches) {
  return m_renderer->FlushFrameBuffer(planes, pitches);
}
bool Renderer::FlushFrameBuffer(unsigned char* buffer, int pitch) {
  return m_renderer->FlushFrameBuffer(buffer, pitch);
}
void Renderer::SetIgnoreAspectRatio(bool ignore) { m_renderer->SetIgnoreAspectRatio(ignore); }
bool Renderer::GetIgnoreAspectRatio() { return m_renderer->GetIgnoreAspectRatio(); }
void Renderer::SetAspectRatio(float ratio) { m_renderer->SetAspectRatio(ratio); }
float Renderer::GetAspectRatio() { return m_renderer->GetAspectRatio(); }
float Renderer::GetCurrentAspectRatio() { return m_renderer->GetCurrentAspectRatio(); }
void Renderer::ResetAspectRatio() { m_renderer->ResetAspectRatio(); }
wxSize Renderer::GetVideoSize() { return m_renderer->GetVideoSize(); }
void Renderer::SetVideoSize(wxSize size) { m_renderer->SetVideoSize(size); }
NormalDigitalPTZ* Renderer::GetNormalPtz() { return m_renderer->GetNormalPtz(); }
CDigitalPTZ* Renderer::GetPtz() { return m_renderer->GetPtz(); }
CDigitalPTZType& Renderer::GetPtzType() { return m_renderer->GetPtzType(); }
void Renderer::SetDestinationRect(wxRect rect) { m_renderer->SetDestinationRect(rect); }
wxRect Renderer::GetDestinationRect() { return m_renderer->GetDestinationRect(); }
void Renderer::ResetDestinationRect() { m_renderer->ResetDestinationRect(); }
wxSize Renderer::GetRenderClientSize() { return m_renderer->GetRenderClientSize(); }
void Renderer::GetRenderClientSize(int& width, int& height) {
  m_renderer->GetRenderClientSize(width, height);
}
void Renderer::GetSubImageRect(wxRect& destination, wxRect& source, bool force) {
  m_renderer->GetSubImageRect(destination, source, force);
}
void Renderer::GetSubImageRect(int width, int height, wxRect& destination, wxRect& source,
                               bool force) {
  m_renderer->GetSubImageRect(width, height, destination, source, force);
}
wxRect Renderer::GetAdjustedPtzSourceRect() { return m_renderer->GetAdjustedPtzSourceRect(); }
void Renderer::Render(wxDC* dc) { m_renderer->Render(dc); }
wxSize Renderer::MeasureText(const wxString& text, wxFont font) {
  return m_renderer->MeasureText(text, font);
}
int Renderer::GetLineHeight(wxFont font) { return m_renderer->GetLineHeight(font); }
void Renderer::DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) {
  m_renderer->DrawBitmap(dc, bitmap, x, y);
}
void Renderer::DrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour,
                         wxRect rect, int alignment, bool scale, wxColour background) {
  m_renderer->DrawLabel(dc, text, font, textColour, rect, alignment, scale, background);
}
void Renderer::DrawRect(wxDC* dc, wxRect rect, wxColour colour) {
  m_renderer->DrawRect(dc, rect, colour);
}
void Renderer::DrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) {
  m_renderer->DrawRectOutline(dc, rect, colour, width);
}
void Renderer::DrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) {
  m_renderer->DrawLine(dc, from, to, colour, width);
}
unsigned char Renderer::GetOpacity() const { return m_renderer->GetOpacity(); }
void Renderer::SetOpacity(unsigned char opacity) { m_renderer->SetOpacity(opacity); }
