// TestFrame: guarded plane buffers with sample addressing per pixel format.
#include "TestFrame.h"

#include <algorithm>
#include <sstream>

#include <decompressor/CPixelLayout.h>
#include <decompressor/PixelFormat.h>

namespace {

constexpr int kNeutral = 128;

}  // namespace

TestFrame::TestFrame(int format, int width, int height, int padding)
    : m_format(format), m_width(width), m_height(height) {
  const CPixelLayout layout(format, width, height);
  for (int plane = 0; plane < layout.GetPlaneCount(); ++plane) {
    m_rowBytes[plane] = layout.GetRowBytes(plane);
    m_rows[plane] = layout.GetRows(plane);
    m_pitches[plane] = layout.GetPitch(plane) + padding;
    m_storage[plane].assign(static_cast<size_t>(m_pitches[plane]) * m_rows[plane] + kGuardBytes,
                            kSentinel);
    m_planes[plane] = m_storage[plane].data();
  }
}

bool TestFrame::IsRgb() const { return IsRgbPixelFormat(m_format); }

::testing::AssertionResult TestFrame::GuardsIntact() const { return SentinelsKept(false); }

::testing::AssertionResult TestFrame::Untouched() const { return SentinelsKept(true); }

void TestFrame::Paint(const std::function<Rgb(int, int)>& rgb) {
  if (!IsRgb()) {
    PaintYuv([&rgb](int x, int y) { return ReferenceRgbToYuv(rgb(x, y)); });
    return;
  }
  for (int y = 0; y < m_height; ++y) {
    for (int x = 0; x < m_width; ++x) {
      const Rgb colour = rgb(x, y);
      const Spot spot = RgbSpot(x, y);
      const bool bgr = m_format == PIXEL_FORMAT_BGR24;
      m_planes[0][spot.offset + (bgr ? 2 : 0)] = static_cast<unsigned char>(colour.r);
      m_planes[0][spot.offset + 1] = static_cast<unsigned char>(colour.g);
      m_planes[0][spot.offset + (bgr ? 0 : 2)] = static_cast<unsigned char>(colour.b);
      if (m_format == PIXEL_FORMAT_RGBA32) m_planes[0][spot.offset + 3] = 255;
    }
  }
}

void TestFrame::PaintYuv(const std::function<Yuv(int, int)>& yuv) {
  const int vertical = IsSubsampledVertically() ? 2 : 1;
  for (int y = 0; y < m_height; ++y) {
    for (int x = 0; x < m_width; ++x) {
      const Yuv sample = yuv(x, y);
      Byte(LumaSpot(x, y)) = static_cast<unsigned char>(sample.y);
      const bool blockCorner = x % 2 == 0 && y % vertical == 0;
      if (!blockCorner) continue;
      const int cx = x / 2;
      const int cy = y / vertical;
      const bool halfPair =
          (m_format == PIXEL_FORMAT_YUYV || m_format == PIXEL_FORMAT_UYVY) && cx == m_width / 2;
      if (HasChroma(cx, cy) || halfPair) Byte(USpot(cx, cy)) = static_cast<unsigned char>(sample.u);
      if (HasChroma(cx, cy)) Byte(VSpot(cx, cy)) = static_cast<unsigned char>(sample.v);
    }
  }
}

Yuv TestFrame::YuvAt(int x, int y) const {
  const int vertical = IsSubsampledVertically() ? 2 : 1;
  const int chromaRows = vertical == 2 ? m_height / 2 : m_height;
  const int cx = std::min(x / 2, m_width / 2 - 1);
  const int cy = std::min(y / vertical, chromaRows - 1);
  const int luma = Byte(LumaSpot(x, y));
  if (cx < 0 || cy < 0) return Yuv{luma, kNeutral, kNeutral};
  return Yuv{luma, Byte(USpot(cx, cy)), Byte(VSpot(cx, cy))};
}

Rgb TestFrame::RgbAt(int x, int y) const {
  const unsigned char* pixel = m_planes[0] + RgbSpot(x, y).offset;
  if (m_format == PIXEL_FORMAT_BGR24) return Rgb{pixel[2], pixel[1], pixel[0]};
  return Rgb{pixel[0], pixel[1], pixel[2]};
}

int TestFrame::AlphaAt(int x, int y) const { return m_planes[0][RgbSpot(x, y).offset + 3]; }

SampleImage TestFrame::ToImage() const {
  SampleImage image(m_width, m_height, IsRgb() ? SampleImage::Kind::kRgb : SampleImage::Kind::kYuv);
  for (int y = 0; y < m_height; ++y) {
    for (int x = 0; x < m_width; ++x) {
      if (IsRgb()) {
        const Rgb pixel = RgbAt(x, y);
        image.Set(x, y, pixel.r, pixel.g, pixel.b);
      } else {
        const Yuv pixel = YuvAt(x, y);
        image.Set(x, y, pixel.y, pixel.u, pixel.v);
      }
    }
  }
  return image;
}

::testing::AssertionResult TestFrame::SamePictureBytes(const TestFrame& other,
                                                       const std::string& name) const {
  for (int plane = 0; plane < 3; ++plane) {
    for (int row = 0; row < m_rows[plane]; ++row) {
      for (int column = 0; column < m_rowBytes[plane]; ++column) {
        const unsigned char mine = m_planes[plane][row * m_pitches[plane] + column];
        const unsigned char theirs = other.m_planes[plane][row * other.m_pitches[plane] + column];
        if (mine == theirs) continue;
        return ::testing::AssertionFailure()
               << "plane " << plane << " row " << row << " byte " << column << ": " << int(mine)
               << " instead of " << int(theirs) << "; saved "
               << SaveComparison(ToImage(), other.ToImage(), name);
      }
    }
  }
  return ::testing::AssertionSuccess();
}

bool TestFrame::IsSubsampledVertically() const {
  return m_format == PIXEL_FORMAT_I420 || m_format == PIXEL_FORMAT_YV12 ||
         m_format == PIXEL_FORMAT_NV12;
}

bool TestFrame::HasChroma(int cx, int cy) const {
  const int chromaRows = IsSubsampledVertically() ? m_height / 2 : m_height;
  return cx < m_width / 2 && cy < chromaRows;
}

TestFrame::Spot TestFrame::LumaSpot(int x, int y) const {
  const size_t row = static_cast<size_t>(y) * m_pitches[0];
  switch (m_format) {
    case PIXEL_FORMAT_YUYV: return Spot{0, row + x / 2 * 4 + x % 2 * 2};
    case PIXEL_FORMAT_UYVY: return Spot{0, row + x / 2 * 4 + 1 + x % 2 * 2};
    default: return Spot{0, row + x};
  }
}

TestFrame::Spot TestFrame::USpot(int cx, int cy) const {
  switch (m_format) {
    case PIXEL_FORMAT_YUYV: return Spot{0, static_cast<size_t>(cy) * m_pitches[0] + cx * 4 + 1};
    case PIXEL_FORMAT_UYVY: return Spot{0, static_cast<size_t>(cy) * m_pitches[0] + cx * 4};
    case PIXEL_FORMAT_NV12: return Spot{1, static_cast<size_t>(cy) * m_pitches[1] + cx * 2};
    case PIXEL_FORMAT_YV12: return Spot{2, static_cast<size_t>(cy) * m_pitches[2] + cx};
    default: return Spot{1, static_cast<size_t>(cy) * m_pitches[1] + cx};
  }
}

TestFrame::Spot TestFrame::VSpot(int cx, int cy) const {
  switch (m_format) {
    case PIXEL_FORMAT_YUYV: return Spot{0, static_cast<size_t>(cy) * m_pitches[0] + cx * 4 + 3};
    case PIXEL_FORMAT_UYVY: return Spot{0, static_cast<size_t>(cy) * m_pitches[0] + cx * 4 + 2};
    case PIXEL_FORMAT_NV12: return Spot{1, static_cast<size_t>(cy) * m_pitches[1] + cx * 2 + 1};
    case PIXEL_FORMAT_YV12: return Spot{1, static_cast<size_t>(cy) * m_pitches[1] + cx};
    default: return Spot{2, static_cast<size_t>(cy) * m_pitches[2] + cx};
  }
}

TestFrame::Spot TestFrame::RgbSpot(int x, int y) const {
  const int bytes = m_format == PIXEL_FORMAT_RGBA32 ? 4 : 3;
  return Spot{0, static_cast<size_t>(y) * m_pitches[0] + static_cast<size_t>(x) * bytes};
}

unsigned char& TestFrame::Byte(const Spot& spot) { return m_planes[spot.plane][spot.offset]; }

unsigned char TestFrame::Byte(const Spot& spot) const { return m_planes[spot.plane][spot.offset]; }

bool TestFrame::IsPictureByte(int plane, size_t offset) const {
  const size_t pitch = static_cast<size_t>(m_pitches[plane]);
  return offset / pitch < static_cast<size_t>(m_rows[plane]) &&
         offset % pitch < static_cast<size_t>(m_rowBytes[plane]);
}

::testing::AssertionResult TestFrame::SentinelsKept(bool includingPicture) const {
  for (int plane = 0; plane < 3; ++plane) {
    for (size_t offset = 0; offset < m_storage[plane].size(); ++offset) {
      if (m_storage[plane][offset] == kSentinel) continue;
      if (!includingPicture && IsPictureByte(plane, offset)) continue;
      return ::testing::AssertionFailure()
             << "plane " << plane << " byte " << offset << " (pitch " << m_pitches[plane] << ", "
             << m_rows[plane] << " rows of " << m_rowBytes[plane] << " bytes) was written";
    }
  }
  return ::testing::AssertionSuccess();
}
