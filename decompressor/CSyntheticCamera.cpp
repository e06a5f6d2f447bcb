// CSyntheticCamera: colour bars, a sweeping box and a seven-segment clock, drawn in I420.
#include "CSyntheticCamera.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "PixelFormat.h"

namespace {

constexpr unsigned char kBlack = 16;
constexpr unsigned char kWhite = 235;
constexpr unsigned char kNeutral = 128;
constexpr int kBarCount = 7;

// 75 % bars, left to right: white, yellow, cyan, green, magenta, red, blue (R, G, B).
constexpr unsigned char kBarRgb[kBarCount][3] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191},
                                                 {0, 191, 0},     {191, 0, 191}, {191, 0, 0},
                                                 {0, 0, 191}};

// Segments a to g of the digits 0 to 9, bit 0 = a.
constexpr unsigned char kSegments[10] = {0x3F, 0x06, 0x5B, 0x4F, 0x66,
                                         0x6D, 0x7D, 0x07, 0x7F, 0x6F};

unsigned char Clamp8(double value) {
  return static_cast<unsigned char>(std::clamp(std::lround(value), 0L, 255L));
}

// Clips `rect` to a plane of `width` x `height`.
PtzRect Clip(const PtzRect& rect, int width, int height) {
  const int x0 = std::max(rect.x, 0);
  const int y0 = std::max(rect.y, 0);
  const int x1 = std::min(rect.x + rect.width, width);
  const int y1 = std::min(rect.y + rect.height, height);
  return PtzRect{x0, y0, std::max(0, x1 - x0), std::max(0, y1 - y0)};
}

void FillPlane(unsigned char* plane, int pitch, const PtzRect& rect, unsigned char value) {
  for (int row = rect.y; row < rect.y + rect.height; ++row) {
    std::memset(plane + static_cast<ptrdiff_t>(row) * pitch + rect.x, value, rect.width);
  }
}

}  // namespace

CSyntheticCamera::CSyntheticCamera(int width, int height, int framesPerSecond)
    : m_layout(PIXEL_FORMAT_I420, std::clamp(width, 1, CPixelLayout::kMaxDimension),
               std::clamp(height, 1, CPixelLayout::kMaxDimension)),
      m_rate(std::max(framesPerSecond, 1)),
      m_buffer(static_cast<size_t>(m_layout.GetTotalBytes())) {
  m_layout.SplitBuffer(m_buffer.data(), m_planes, m_pitches);
}

void CSyntheticCamera::Render(long long index) {
  m_index = index;
  Fill(PtzRect{0, 0, GetWidth(), GetHeight()}, Yuv{kBlack, kNeutral, kNeutral});
  DrawBars();
  FillLuma(GetBoxRect(index), kWhite);
  DrawClock(index);
}

long long CSyntheticCamera::NextFrame() {
  Render(m_index + 1);
  return m_index;
}

// The box reaches the right edge after one second and is back at the left after two.
PtzRect CSyntheticCamera::GetBoxRect(long long index) const {
  const int top = BarsBottom();
  const int track = ClockTop() - top;
  const int side = std::max(1, track * 3 / 4);
  const long long travel = std::max(0, GetWidth() - side);
  const long long phase = std::max(index, 0LL) % (2 * m_rate);
  const long long along = phase <= m_rate ? phase : 2 * m_rate - phase;
  const int x = static_cast<int>(along * travel / m_rate);
  return PtzRect{x, top + (track - side) / 2, side, side};
}

// Eight digits half as wide as high with gaps of an eighth, three colons a quarter wide:
// 5.75 digit heights in all, centred in the bottom band.
PtzRect CSyntheticCamera::GetClockRect() const {
  const int height = ClockDigitHeight();
  const int width = height * 23 / 4;
  const int band = GetHeight() - ClockTop();
  return PtzRect{(GetWidth() - width) / 2, ClockTop() + (band - height) / 2, width, height};
}

std::string CSyntheticCamera::FormatClock(long long index, int framesPerSecond) {
  const int rate = std::max(framesPerSecond, 1);
  const long long seconds = std::max(index, 0LL) / rate;
  char text[32];
  std::snprintf(text, sizeof(text), "%02lld:%02lld:%02lld:%02lld", seconds / 3600 % 100,
                seconds / 60 % 60, seconds % 60, std::max(index, 0LL) % rate % 100);
  return text;
}

void CSyntheticCamera::DrawBars() {
  const int height = BarsBottom();
  for (int bar = 0; bar < kBarCount; ++bar) {
    const int x0 = GetWidth() * bar / kBarCount;
    const int x1 = GetWidth() * (bar + 1) / kBarCount;
    const unsigned char* rgb = kBarRgb[bar];
    // BT.601 limited range, the matrix the renderer's YUV programs invert.
    const double r = rgb[0], g = rgb[1], b = rgb[2];
    const Yuv colour{Clamp8(16 + (65.481 * r + 128.553 * g + 24.966 * b) / 255),
                     Clamp8(128 + (-37.797 * r - 74.203 * g + 112.0 * b) / 255),
                     Clamp8(128 + (112.0 * r - 93.786 * g - 18.214 * b) / 255)};
    Fill(PtzRect{x0, 0, x1 - x0, height}, colour);
  }
}

void CSyntheticCamera::DrawClock(long long index) {
  const PtzRect clock = GetClockRect();
  const int height = clock.height;
  int x = clock.x;
  for (char c : FormatClock(index, m_rate)) {
    if (c == ':') {
      DrawColon(x, clock.y, height);
      x += height / 4;
    } else {
      DrawDigit(x, clock.y, height, c);
      x += height / 2 + height / 8;
    }
  }
}

void CSyntheticCamera::DrawDigit(int x, int y, int height, char digit) {
  const int width = height / 2;
  const int half = height / 2;
  const int thick = std::max(1, height / 8);
  const PtzRect segments[7] = {
      {x, y, width, thick},                                 // a: top
      {x + width - thick, y, thick, half},                  // b: upper right
      {x + width - thick, y + half, thick, height - half},  // c: lower right
      {x, y + height - thick, width, thick},                // d: bottom
      {x, y + half, thick, height - half},                  // e: lower left
      {x, y, thick, half},                                  // f: upper left
      {x, y + half - thick / 2, width, thick}};             // g: middle
  const unsigned char lit = kSegments[digit - '0'];
  for (int segment = 0; segment < 7; ++segment) {
    if (lit & (1 << segment)) FillLuma(segments[segment], kWhite);
  }
}

void CSyntheticCamera::DrawColon(int x, int y, int height) {
  const int thick = std::max(1, height / 8);
  const int left = x + (height / 4 - thick) / 2;
  FillLuma(PtzRect{left, y + height / 3 - thick / 2, thick, thick}, kWhite);
  FillLuma(PtzRect{left, y + height * 2 / 3 - thick / 2, thick, thick}, kWhite);
}

// Fills luma and the chroma samples whose 2 x 2 block starts inside the rectangle.
void CSyntheticCamera::Fill(const PtzRect& rect, const Yuv& colour) {
  FillLuma(rect, colour.y);
  const int left = (rect.x + 1) / 2;
  const int top = (rect.y + 1) / 2;
  const PtzRect chroma{left, top, (rect.x + rect.width + 1) / 2 - left,
                       (rect.y + rect.height + 1) / 2 - top};
  const PtzRect clipped = Clip(chroma, m_layout.GetRowBytes(1), m_layout.GetRows(1));
  FillPlane(m_planes[1], m_pitches[1], clipped, colour.u);
  FillPlane(m_planes[2], m_pitches[2], clipped, colour.v);
}

void CSyntheticCamera::FillLuma(const PtzRect& rect, unsigned char value) {
  FillPlane(m_planes[0], m_pitches[0], Clip(rect, GetWidth(), GetHeight()), value);
}

int CSyntheticCamera::BarsBottom() const { return GetHeight() * 2 / 3; }

int CSyntheticCamera::ClockTop() const { return BarsBottom() + (GetHeight() - BarsBottom()) / 2; }

int CSyntheticCamera::ClockDigitHeight() const {
  const int band = GetHeight() - ClockTop();
  return std::max(1, std::min(band * 3 / 4, GetWidth() * 4 / 23));
}
