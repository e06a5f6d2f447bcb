// CDecompressor: argument checks and the decoder's roles around the codec session, the
// picture store and the converter; also the process-wide video-output factory.
#include "CDecompressor.h"

#include "AvColour.h"
#include "CCodecSession.h"
#include "CDigitalPTZ.h"
#include "CFrameConverter.h"
#include "CPictureStore.h"
#include "CPixelLayout.h"
#include "IVideoOutput.h"
#include "PixelFormat.h"

namespace {

CDecompressor::VideoOutputFactory& Factory() {
  static CDecompressor::VideoOutputFactory factory;
  return factory;
}

// Every plane the layout uses has a pointer and a pitch that holds its row; planes without
// picture bytes (the chroma of a picture 1 pixel wide or high) may be null.
template <typename Plane>
bool ArePlanesUsable(const Plane* planes, const int* pitches, const CPixelLayout& layout) {
  if (!planes || !pitches) return false;
  for (int plane = 0; plane < layout.GetPlaneCount(); ++plane) {
    if (layout.GetRowBytes(plane) == 0 || layout.GetRows(plane) == 0) continue;
    if (!planes[plane] || pitches[plane] < layout.GetRowBytes(plane)) return false;
  }
  return true;
}

bool IsEngaged(CDigitalPTZ* ptz) { return ptz && ptz->IsActive() && ptz->enabled; }

}  // namespace

CDecompressor::CDecompressor()
    : m_session(std::make_unique<CCodecSession>()),
      m_picture(std::make_unique<CPictureStore>()),
      m_converter(std::make_unique<CFrameConverter>()) {}

CDecompressor::~CDecompressor() = default;

int CDecompressor::Open(const VideoStreamInfo_t& stream) { return m_session->Open(stream); }

void CDecompressor::Close() { m_session->Close(); }

bool CDecompressor::IsOpen() const { return m_session->IsOpen(); }

int CDecompressor::Decode(const unsigned char* data, int size, long long pts) {
  if (!IsOpen()) return DECOMP_ERROR_NOT_OPEN;
  if (!data || size < 1) return DECOMP_ERROR_ARGUMENT;
  return m_session->Decode(data, size, pts, *m_picture);
}

int CDecompressor::Drain() {
  if (!IsOpen()) return DECOMP_ERROR_NOT_OPEN;
  return m_session->Drain(*m_picture);
}

int CDecompressor::PutFrame(const unsigned char* const* planes, const int* pitches, int format,
                            int width, int height, long long pts) {
  const CPixelLayout layout(format, width, height);
  if (!layout.IsValid() || !ArePlanesUsable(planes, pitches, layout)) {
    return DECOMP_ERROR_ARGUMENT;
  }
  return m_picture->Import(planes, pitches, layout, pts);
}

bool CDecompressor::HasFrame() const { return !m_picture->IsEmpty(); }

int CDecompressor::GetWidth() const { return m_picture->GetWidth(); }

int CDecompressor::GetHeight() const { return m_picture->GetHeight(); }

long long CDecompressor::GetPts() const { return m_picture->GetPts(); }

long long CDecompressor::GetFrameCount() const { return m_picture->GetCount(); }

int CDecompressor::GetConverterSetupCount() const { return m_converter->GetSetupCount(); }

void CDecompressor::SetColourOverride(const ColourSpace_t& colour) { m_colourOverride = colour; }

ColourSpace_t CDecompressor::GetColourOverride() const { return m_colourOverride; }

ColourSpace_t CDecompressor::GetSourceColour() const {
  if (!HasFrame()) return ColourSpace_t{};
  return WithOverride(ColourOf(m_picture->Get()), m_colourOverride);
}

int CDecompressor::GetImage(unsigned char** planes, int* pitches, int format, int width, int height,
                            int srcX, int srcY, int srcWidth, int srcHeight, CDigitalPTZ* ptz) {
  if (!HasFrame()) return DECOMP_ERROR_NO_FRAME;
  const CPixelLayout target(format, width, height);
  PtzRect crop{srcX, srcY, srcWidth, srcHeight};
  if (!target.IsValid() || !ArePlanesUsable(planes, pitches, target) || !IsInsidePicture(crop)) {
    return DECOMP_ERROR_ARGUMENT;
  }
  if (IsEngaged(ptz)) crop = ptz->GetZoomWindow(crop);
  return Convert(planes, pitches, target, crop);
}

bool CDecompressor::IsHardwareDecoding() const { return false; }

int CDecompressor::GetHardwarePixelFormat() const { return PIXEL_FORMAT_NONE; }

bool CDecompressor::RequiresSoftwarePath() const { return true; }

int CDecompressor::CopyToHardwareImage(HardwareImageInfo&) { return DECOMP_ERROR_UNSUPPORTED; }

bool CDecompressor::RenderToVideoOutput(IVideoOutput* output) {
  if (!output || !HasFrame()) return false;
  const int width = GetWidth();
  const int height = GetHeight();
  const CPixelLayout layout(PIXEL_FORMAT_I420, width, height);
  if (!layout.IsValid()) return false;
  m_outputBuffer.resize(static_cast<size_t>(layout.GetTotalBytes()));
  unsigned char* planes[CPixelLayout::kMaxPlanes];
  int pitches[CPixelLayout::kMaxPlanes];
  layout.SplitBuffer(m_outputBuffer.data(), planes, pitches);
  if (Convert(planes, pitches, layout, PtzRect{0, 0, width, height}) != DECOMP_OK) return false;
  return output->Present(planes, pitches, PIXEL_FORMAT_I420, width, height);
}

bool CDecompressor::IsInsidePicture(const PtzRect& rect) const {
  return !rect.IsEmpty() && rect.x >= 0 && rect.y >= 0 && rect.width <= GetWidth() - rect.x &&
         rect.height <= GetHeight() - rect.y;
}

int CDecompressor::Convert(unsigned char* const* planes, const int* pitches,
                           const CPixelLayout& target, const PtzRect& crop) {
  return m_converter->Convert(m_picture->Get(), GetSourceColour(), crop, target, planes, pitches);
}

void CDecompressor::SetVideoOutputFactory(VideoOutputFactory factory) {
  Factory() = std::move(factory);
}

bool CDecompressor::HasVideoOutput() { return static_cast<bool>(Factory()); }

IVideoOutput* CDecompressor::CreateVideoOutput() {
  return HasVideoOutput() ? Factory()() : nullptr;
}

void CDecompressor::DeleteVideoOutput(IVideoOutput*& output) {
  delete output;
  output = nullptr;
}
