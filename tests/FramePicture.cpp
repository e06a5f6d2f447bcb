// Test frames of known samples and the colours they must show.
#include "FramePicture.h"

#include <algorithm>
#include <cmath>

#include <decompressor/PixelFormat.h>

namespace {

unsigned char Byte(int value) { return static_cast<unsigned char>(value); }

// One channel of the programs' output: clamped to 0..1 by the colour output, then stored in
// eight bits.
unsigned char Channel(double value) {
  return static_cast<unsigned char>(std::lround(std::clamp(value, 0.0, 1.0) * 255.0));
}

bool IsSubsampledVertically(int format) {
  return format == PIXEL_FORMAT_I420 || format == PIXEL_FORMAT_YV12 || format == PIXEL_FORMAT_NV12;
}

}  // namespace

// Black and white at the video levels, mid-grey, the saturated primaries and secondaries, and
// both ends of the byte range (which the output clamps).
const std::vector<FramePicture::Yuv>& FramePicture::YuvPalette() {
  static const std::vector<Yuv> palette = {
      {16, 128, 128},  {235, 128, 128}, {128, 128, 128}, {81, 90, 240},
      {145, 54, 34},   {41, 240, 110},  {210, 16, 146},  {170, 166, 16},
      {106, 202, 222}, {0, 0, 0},       {255, 255, 255}, {60, 200, 60},
  };
  return palette;
}

const std::vector<wxColour>& FramePicture::RgbPalette() {
  static const std::vector<wxColour> palette = {
      wxColour(0, 0, 0),     wxColour(255, 255, 255), wxColour(128, 128, 128),
      wxColour(255, 0, 0),   wxColour(0, 255, 0),     wxColour(0, 0, 255),
      wxColour(255, 255, 0), wxColour(0, 255, 255),   wxColour(255, 0, 255),
      wxColour(1, 2, 3),     wxColour(250, 128, 7),   wxColour(17, 200, 99),
  };
  return palette;
}

wxColour FramePicture::ProgramColour(const Yuv& sample) {
  return ProgramColour(sample.y, sample.u, sample.v);
}

wxColour FramePicture::ProgramColour(double luma, double blue, double red) {
  const double y = 1.1643 * (luma / 255.0) - 0.0625;
  const double u = blue / 255.0 - 0.5;
  const double v = red / 255.0 - 0.5;
  return wxColour(Channel(y + 1.5958 * v), Channel(y - 0.39173001 * u - 0.81290001 * v),
                  Channel(y + 2.017 * u));
}

FramePicture::FramePicture(int format, wxSize size) : m_format(format), m_size(size) {}

FramePicture FramePicture::MakeYuv(int format, wxSize size, LumaFunction luma,
                                   ChromaFunction chroma) {
  FramePicture picture(format, size);
  picture.m_luma = std::move(luma);
  picture.m_chroma = std::move(chroma);
  return picture;
}

FramePicture FramePicture::MakeRgb(int format, wxSize size, ColourFunction colour) {
  FramePicture picture(format, size);
  picture.m_colour = std::move(colour);
  return picture;
}

FramePicture FramePicture::Bars(int format, wxSize size) {
  const int half = size.y / 2;
  if (format == PIXEL_FORMAT_RGB24 || format == PIXEL_FORMAT_BGR24 ||
      format == PIXEL_FORMAT_RGBA32) {
    return MakeRgb(format, size, [half](int x, int y) {
      if (y < half) return RgbPalette()[(x / 16) % RgbPalette().size()];
      return wxColour(Byte((x * 7 + y * 3) % 256), Byte((x * 13 + y * 5) % 256),
                      Byte((x * 3 + y * 17) % 256), Byte((x + y) % 256));
    });
  }
  const int chromaRows = IsSubsampledVertically(format) ? 2 : 1;
  return MakeYuv(
      format, size,
      [half](int x, int y) {
        if (y < half) return YuvPalette()[(x / 16) % YuvPalette().size()].y;
        return 16 + (x * 37 + y * 11) % 220;
      },
      [half, chromaRows](int cx, int cy) {
        if (cy * chromaRows < half) return YuvPalette()[(cx * 2 / 16) % YuvPalette().size()];
        return Yuv{0, 16 + (cx * 53 + cy * 29) % 225, 16 + (cx * 19 + cy * 41 + 100) % 225};
      });
}

FramePicture FramePicture::Blocks(int format, wxSize size, int side) {
  const int columns = (size.x + side - 1) / side;
  auto block = [side, columns](int x, int y) { return (y / side) * columns + x / side; };
  if (format == PIXEL_FORMAT_RGB24 || format == PIXEL_FORMAT_BGR24 ||
      format == PIXEL_FORMAT_RGBA32) {
    return MakeRgb(format, size, [block](int x, int y) {
      return RgbPalette()[block(x, y) % RgbPalette().size()];
    });
  }
  const int chromaRows = IsSubsampledVertically(format) ? 2 : 1;
  return MakeYuv(
      format, size,
      [block](int x, int y) { return YuvPalette()[block(x, y) % YuvPalette().size()].y; },
      [block, chromaRows](int cx, int cy) {
        return YuvPalette()[block(cx * 2, cy * chromaRows) % YuvPalette().size()];
      });
}

FramePicture FramePicture::Solid(int format, wxSize size, const Yuv& sample) {
  return MakeYuv(
      format, size, [sample](int, int) { return sample.y; }, [sample](int, int) { return sample; });
}

bool FramePicture::IsYuv() const { return static_cast<bool>(m_luma); }

int FramePicture::ChromaRows() const { return IsSubsampledVertically(m_format) ? 2 : 1; }

FramePicture::Yuv FramePicture::SampleAt(int x, int y) const {
  const Yuv chroma = m_chroma(x / 2, y / ChromaRows());
  return Yuv{m_luma(x, y), chroma.u, chroma.v};
}

wxColour FramePicture::TexelColour(int x, int y) const {
  if (IsYuv()) return ProgramColour(SampleAt(x, y));
  const wxColour colour = m_colour(x, y);
  return wxColour(colour.Red(), colour.Green(), colour.Blue());
}

void FramePicture::Write(unsigned char** planes, const int* pitches) const {
  switch (m_format) {
    case PIXEL_FORMAT_I420:
    case PIXEL_FORMAT_YUV422P: WritePlanar(planes, pitches, false); break;
    case PIXEL_FORMAT_YV12: WritePlanar(planes, pitches, true); break;
    case PIXEL_FORMAT_NV12: WriteSemiPlanar(planes, pitches); break;
    case PIXEL_FORMAT_YUYV: WritePacked(planes[0], pitches[0], false); break;
    case PIXEL_FORMAT_UYVY: WritePacked(planes[0], pitches[0], true); break;
    default: WriteRgb(planes[0], pitches[0]); break;
  }
}

// Luma plane, then U and V planes (V and U with `vFirst`) at the chroma grid's size.
void FramePicture::WritePlanar(unsigned char** planes, const int* pitches, bool vFirst) const {
  for (int y = 0; y < m_size.y; ++y) {
    for (int x = 0; x < m_size.x; ++x) planes[0][y * pitches[0] + x] = Byte(m_luma(x, y));
  }
  unsigned char* u = vFirst ? planes[2] : planes[1];
  unsigned char* v = vFirst ? planes[1] : planes[2];
  const int uPitch = vFirst ? pitches[2] : pitches[1];
  const int vPitch = vFirst ? pitches[1] : pitches[2];
  for (int cy = 0; cy < m_size.y / ChromaRows(); ++cy) {
    for (int cx = 0; cx < m_size.x / 2; ++cx) {
      const Yuv chroma = m_chroma(cx, cy);
      u[cy * uPitch + cx] = Byte(chroma.u);
      v[cy * vPitch + cx] = Byte(chroma.v);
    }
  }
}

void FramePicture::WriteSemiPlanar(unsigned char** planes, const int* pitches) const {
  for (int y = 0; y < m_size.y; ++y) {
    for (int x = 0; x < m_size.x; ++x) planes[0][y * pitches[0] + x] = Byte(m_luma(x, y));
  }
  for (int cy = 0; cy < m_size.y / 2; ++cy) {
    for (int cx = 0; cx < m_size.x / 2; ++cx) {
      const Yuv chroma = m_chroma(cx, cy);
      planes[1][cy * pitches[1] + 2 * cx] = Byte(chroma.u);
      planes[1][cy * pitches[1] + 2 * cx + 1] = Byte(chroma.v);
    }
  }
}

// Pixel pairs as Y0 U Y1 V, or U Y0 V Y1 with `chromaFirst`.
void FramePicture::WritePacked(unsigned char* plane, int pitch, bool chromaFirst) const {
  const int luma = chromaFirst ? 1 : 0;
  const int chroma = chromaFirst ? 0 : 1;
  for (int y = 0; y < m_size.y; ++y) {
    for (int cx = 0; cx < m_size.x / 2; ++cx) {
      unsigned char* pair = plane + y * pitch + 4 * cx;
      const Yuv sample = m_chroma(cx, y);
      pair[luma] = Byte(m_luma(2 * cx, y));
      pair[chroma] = Byte(sample.u);
      pair[luma + 2] = Byte(m_luma(2 * cx + 1, y));
      pair[chroma + 2] = Byte(sample.v);
    }
  }
}

void FramePicture::WriteRgb(unsigned char* plane, int pitch) const {
  const bool bgr = m_format == PIXEL_FORMAT_BGR24;
  const int bytes = m_format == PIXEL_FORMAT_RGBA32 ? 4 : 3;
  for (int y = 0; y < m_size.y; ++y) {
    for (int x = 0; x < m_size.x; ++x) {
      const wxColour colour = m_colour(x, y);
      unsigned char* pixel = plane + y * pitch + bytes * x;
      pixel[0] = bgr ? colour.Blue() : colour.Red();
      pixel[1] = colour.Green();
      pixel[2] = bgr ? colour.Red() : colour.Blue();
      if (bytes == 4) pixel[3] = colour.Alpha();
    }
  }
}
