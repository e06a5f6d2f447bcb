// CDecompressor: argument checks and the decoder's roles around the codec session, the
// picture store and the converter; also the process-wide video-output factory.
#include "CDecompressor.h"

#include "AvColour.h"
#include "CCodecSession.h"
#include "CDigitalPTZ.h"
#include "CFrameConverter.h"
#include "CPictureStore.h"
#include "CPixelLayout.h"
#include "CRateWindow.h"
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

constexpr double kRateWindowSeconds = 2.0;

}  // namespace

CDecompressor::CDecompressor()
    : m_session(std::make_unique<CCodecSession>()),
      m_picture(std::make_unique<CPictureStore>()),
      m_converter(std::make_unique<CFrameConverter>()),
      m_pictureRate(std::make_unique<CRateWindow>(kRateWindowSeconds)),
      m_bitRate(std::make_unique<CRateWindow>(kRateWindowSeconds)) {}

CDecompressor::~CDecompressor() = default;

int CDecompressor::Open(const VideoStreamInfo_t& stream) {
  m_pictureRate->SetTimeBase(stream.timeBaseNum, stream.timeBaseDen);
  m_bitRate->SetTimeBase(stream.timeBaseNum, stream.timeBaseDen);
  return m_session->Open(stream, m_damagePolicy);
}

void CDecompressor::Close() { m_session->Close(); }

bool CDecompressor::IsOpen() const { return m_session->IsOpen(); }

void CDecompressor::SetDamagePolicy(DamagePolicy policy) { m_damagePolicy = policy; }

DamagePolicy CDecompressor::GetDamagePolicy() const { return m_damagePolicy; }

int CDecompressor::Decode(const unsigned char* data, int size, long long pts) {
  if (!IsOpen()) return DECOMP_ERROR_NOT_OPEN;
  if (!data || size < 1) return DECOMP_ERROR_ARGUMENT;
  const long long before = GetFrameCount();
  return Measure(before, pts, size, m_session->Decode(data, size, pts, *m_picture));
}

int CDecompressor::Drain() {
  if (!IsOpen()) return DECOMP_ERROR_NOT_OPEN;
  const long long before = GetFrameCount();
  return Measure(before, GetPts(), 0, m_session->Drain(*m_picture));
}

// Feeds the rate windows with a packet's bits and the pictures it completed, and stamps the
// time of the latest picture. Passes `result` through.
int CDecompressor::Measure(long long countBefore, long long pts, int bytes, int result) {
  const long long pictures = GetFrameCount() - countBefore;
  if (bytes > 0) m_bitRate->Add(pts, 8.0 * bytes);
  if (pictures > 0) {
    m_pictureRate->Add(GetPts(), static_cast<double>(pictures));
    m_latestPictureTime = std::chrono::steady_clock::now();
  }
  return result;
}

int CDecompressor::PutFrame(const unsigned char* const* planes, const int* pitches, int format,
                            int width, int height, long long pts) {
  const CPixelLayout layout(format, width, height);
  if (!layout.IsValid() || !ArePlanesUsable(planes, pitches, layout)) {
    return DECOMP_ERROR_ARGUMENT;
  }
  const int result = m_picture->Import(planes, pitches, layout, pts);
  if (result == DECOMP_OK) m_latestPictureTime = std::chrono::steady_clock::now();
  return result;
}

bool CDecompressor::HasFrame() const { return !m_picture->IsEmpty(); }

int CDecompressor::GetWidth() const { return m_picture->GetWidth(); }

int CDecompressor::GetHeight() const { return m_picture->GetHeight(); }

long long CDecompressor::GetPts() const { return m_picture->GetPts(); }

long long CDecompressor::GetFrameCount() const { return m_picture->GetCount(); }

DecoderStatistics_t CDecompressor::GetStatistics() const {
  const CCodecSession::Counts& counts = m_session->GetCounts();
  DecoderStatistics_t statistics;
  statistics.picturesDecoded = counts.decoded;
  statistics.picturesDamaged = counts.damaged;
  statistics.picturesDropped = counts.dropped;
  statistics.framesPerSecond = m_pictureRate->GetRate();
  statistics.bitsPerSecond = m_bitRate->GetRate();
  if (HasFrame()) {
    const std::chrono::duration<double> age =
        std::chrono::steady_clock::now() - m_latestPictureTime;
    statistics.latestPictureAge = age.count();
  }
  statistics.codec = m_session->GetCodecName();
  statistics.width = GetWidth();
  statistics.height = GetHeight();
  statistics.colour = GetSourceColour();
  return statistics;
}

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
