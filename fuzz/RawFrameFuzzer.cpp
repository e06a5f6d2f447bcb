// Fuzz harness of the decoder's raw-frame side: a sequence of PutFrame and GetImage calls with
// arbitrary arguments (pixel formats, sizes, pitches, null planes, source rectangles), host
// PTZ objects set to any values (NaN and infinities included) and their geometry, colour
// overrides of any value, video-output presentation, and Open with any codec name and
// declared size followed by arbitrary data.
//
// Besides crashes and sanitizer reports it checks the argument contract: PutFrame and GetImage
// accept only arguments the frame-buffer table allows (a known format, sizes of 1 to the
// limit, a plane and a pitch of at least a row wherever the table has picture bytes, a source
// rectangle inside the picture); an accepted call with anything else aborts.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <decompressor/CDecompressor.h>
#include <decompressor/CDigitalPTZ.h>
#include <decompressor/CPixelLayout.h>
#include <decompressor/NormalDigitalPTZ.h>

#include "FuzzPlanes.h"
#include "FuzzQuiet.h"
#include "FuzzValues.h"
#include "NullVideoOutput.h"

namespace {

constexpr int kMaxOperations = 64;
constexpr int kUsualSize = 80;

const char* const kCodecNames[] = {"h264", "hevc", "h265", "mjpeg", "mpeg4", "rawvideo",
                                   "png",  "gif",  "bmp",  "vp8",   "vp9",   "mpeg2video"};

// Whether the table lets a caller pass these planes: a plane and a pitch of at least a row
// wherever the layout has picture bytes.
bool PlanesAllowed(const CPixelLayout& layout, unsigned char** planes, const int* pitches) {
  if (!layout.IsValid()) return false;
  for (int plane = 0; plane < layout.GetPlaneCount(); ++plane) {
    if (layout.GetRowBytes(plane) == 0 || layout.GetRows(plane) == 0) continue;
    if (!planes[plane] || pitches[plane] < layout.GetRowBytes(plane)) return false;
  }
  return true;
}

void Require(bool condition) {
  if (!condition) __builtin_trap();
}

class Session {
 public:
  explicit Session(FuzzValues& values) : m_values(values) {}

  void Run() {
    for (int step = 0; step < kMaxOperations && !m_values.Empty(); ++step) {
      switch (m_values.Choice(8)) {
        case 0:
        case 1: PutFrame(); break;
        case 2:
        case 3: GetImage(); break;
        case 4: SetPtz(); break;
        case 5: Geometry(); break;
        case 6: Colour(); break;
        case 7: OpenAndDecode(); break;
      }
    }
  }

 private:
  // A frame buffer of arbitrary format, size and pitches; planes dropped at random.
  std::unique_ptr<FuzzPlanes> Frame(int& format, int& width, int& height) {
    format = m_values.Format();
    width = m_values.Dimension(kUsualSize);
    height = m_values.Dimension(kUsualSize);
    const CPixelLayout layout(format, width, height);
    int pitches[CPixelLayout::kMaxPlanes];
    for (int plane = 0; plane < CPixelLayout::kMaxPlanes; ++plane) {
      pitches[plane] = m_values.Pitch(layout.GetRowBytes(plane));
    }
    auto planes = std::make_unique<FuzzPlanes>(layout, pitches);
    if (m_values.Choice(8) == 0) planes->Drop(m_values.Choice(CPixelLayout::kMaxPlanes));
    return planes;
  }

  void PutFrame() {
    int format, width, height;
    std::unique_ptr<FuzzPlanes> frame = Frame(format, width, height);
    const CPixelLayout layout(format, width, height);
    const bool allowed = PlanesAllowed(layout, frame->Planes(), frame->Pitches());
    const bool null = m_values.Choice(16) == 0;
    const int result =
        m_decoder.PutFrame(null ? nullptr : frame->Planes(), null ? nullptr : frame->Pitches(),
                           format, width, height, m_values.Provider().ConsumeIntegral<long long>());
    Require(result != DECOMP_OK || (allowed && !null));
  }

  void GetImage() {
    int format, width, height;
    std::unique_ptr<FuzzPlanes> frame = Frame(format, width, height);
    const CPixelLayout layout(format, width, height);
    const bool allowed = PlanesAllowed(layout, frame->Planes(), frame->Pitches());
    const int pictureWidth = m_decoder.GetWidth();
    const int pictureHeight = m_decoder.GetHeight();
    const int x = m_values.Coordinate(pictureWidth);
    const int y = m_values.Coordinate(pictureHeight);
    const int cropWidth = m_values.Dimension(pictureWidth);
    const int cropHeight = m_values.Dimension(pictureHeight);
    const bool inside = cropWidth > 0 && cropHeight > 0 && x >= 0 && y >= 0 &&
                        static_cast<long long>(x) + cropWidth <= pictureWidth &&
                        static_cast<long long>(y) + cropHeight <= pictureHeight;
    CDigitalPTZ* ptz = nullptr;
    switch (m_values.Choice(3)) {
      case 0: ptz = &m_ptz; break;
      case 1: ptz = &m_normalPtz; break;
      default: break;
    }
    const int result = m_decoder.GetImage(frame->Planes(), frame->Pitches(), format, width, height,
                                          x, y, cropWidth, cropHeight, ptz);
    Require(result != DECOMP_OK || (allowed && inside));
    if (m_values.Choice(4) == 0) {
      NullVideoOutput output;
      m_decoder.RenderToVideoOutput(m_values.Bool() ? &output : nullptr);
    }
  }

  void SetPtz() {
    CDigitalPTZ& ptz = m_values.Bool() ? static_cast<CDigitalPTZ&>(m_normalPtz) : m_ptz;
    ptz.SetPanTiltZoom(m_values.Float(-1.5f, 1.5f), m_values.Float(-1.5f, 1.5f),
                       m_values.Float(0.0f, 20.0f));
    if (m_values.Bool()) ptz.SetMaxZoom(m_values.Float(0.0f, 40.0f));
    ptz.enabled = m_values.Bool();
    ptz.SetZoomActive(m_values.Bool());
    ptz.IsActive();
    ptz.GetZoomWindow(PtzRect{m_values.Coordinate(kUsualSize), m_values.Coordinate(kUsualSize),
                              m_values.Dimension(kUsualSize), m_values.Dimension(kUsualSize)});
  }

  void Geometry() {
    m_normalPtz.SetSize(m_values.Dimension(kUsualSize), m_values.Dimension(kUsualSize));
    m_normalPtz.SetClientSize(m_values.Dimension(kUsualSize), m_values.Dimension(kUsualSize));
    m_normalPtz.SetSourceRect(m_values.Coordinate(kUsualSize), m_values.Coordinate(kUsualSize),
                              m_values.Dimension(kUsualSize), m_values.Dimension(kUsualSize));
    m_normalPtz.SetAspectRatio(m_values.Bool() ? 0.0f : m_values.Float(0.1f, 4.0f));
    m_normalPtz.SetIgnoreAspectRatio(m_values.Bool());
    int x, y, width, height, dstX, dstY, dstWidth, dstHeight;
    m_normalPtz.GetDestinationRect(m_normalPtz.GetCurrentAspectRatio(), x, y, width, height);
    m_normalPtz.GetDestinationRect(m_values.Float(0.1f, 4.0f), x, y, width, height);
    m_normalPtz.GetAdjustedRects(x, y, width, height, dstX, dstY, dstWidth, dstHeight);
  }

  void Colour() {
    ColourSpace_t colour;
    colour.matrix =
        static_cast<ColourMatrix>(m_values.Bool() ? m_values.Choice(5) : m_values.Coordinate(4));
    colour.range =
        static_cast<ColourRange>(m_values.Bool() ? m_values.Choice(4) : m_values.Coordinate(3));
    m_decoder.SetColourOverride(colour);
    m_decoder.GetSourceColour();
    m_decoder.GetStatistics();
  }

  void OpenAndDecode() {
    VideoStreamInfo_t stream;
    const int pick = m_values.Choice(static_cast<int>(std::size(kCodecNames)) + 1);
    stream.codec =
        pick < static_cast<int>(std::size(kCodecNames)) ? kCodecNames[pick] : m_values.Text(16);
    stream.width = m_values.Dimension(kUsualSize);
    stream.height = m_values.Dimension(kUsualSize);
    stream.timeBaseNum = m_values.Coordinate(1);
    stream.timeBaseDen = m_values.Dimension(90000);
    stream.extradata = m_values.Provider().ConsumeBytes<unsigned char>(
        m_values.Provider().ConsumeIntegralInRange(0, 64));
    m_decoder.SetDamagePolicy(m_values.Bool() ? DamagePolicy::kDrop : DamagePolicy::kConceal);
    if (m_decoder.Open(stream) != DECOMP_OK) return;
    const std::vector<unsigned char> data = m_values.Provider().ConsumeBytes<unsigned char>(
        m_values.Provider().ConsumeIntegralInRange(0, 4096));
    m_decoder.Decode(data.empty() ? nullptr : data.data(), static_cast<int>(data.size()),
                     m_values.Provider().ConsumeIntegral<long long>());
    if (m_values.Bool()) m_decoder.Drain();
    if (m_values.Bool()) m_decoder.Close();
  }

  FuzzValues& m_values;
  CDecompressor m_decoder;
  CDigitalPTZ m_ptz;
  NormalDigitalPTZ m_normalPtz;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  SilenceCodecLog();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider provider(data, size);
  FuzzValues values(provider);
  Session session(values);
  session.Run();
  return 0;
}
