// FuzzValues: plausible and hostile argument values.
#include "FuzzValues.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <limits>

#include <decompressor/CPixelLayout.h>
#include <decompressor/PixelFormat.h>

namespace {

template <typename T, size_t N>
T Pick(FuzzedDataProvider& provider, const T (&values)[N]) {
  return values[provider.ConsumeIntegralInRange<size_t>(0, N - 1)];
}

constexpr int kEdgeSizes[] = {0,
                              -1,
                              -2,
                              1,
                              2,
                              3,
                              CPixelLayout::kMaxDimension,
                              CPixelLayout::kMaxDimension + 1,
                              65536,
                              46341,
                              INT_MAX,
                              INT_MIN,
                              INT_MAX / 2};

constexpr int kEdgeCoordinates[] = {
    -1, -2, -65536, INT_MIN, INT_MIN + 1, INT_MAX, CPixelLayout::kMaxDimension, 65536};

constexpr int kFormats[] = {PIXEL_FORMAT_I420,  PIXEL_FORMAT_YV12,  PIXEL_FORMAT_YUV422P,
                            PIXEL_FORMAT_NV12,  PIXEL_FORMAT_YUYV,  PIXEL_FORMAT_UYVY,
                            PIXEL_FORMAT_RGB24, PIXEL_FORMAT_BGR24, PIXEL_FORMAT_RGBA32};

constexpr int kOddFormats[] = {PIXEL_FORMAT_NONE, 5, 7, 8, 20, 24, 255, INT_MAX, INT_MIN};

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kEdgeFloats[] = {std::numeric_limits<float>::quiet_NaN(),
                                 -std::numeric_limits<float>::quiet_NaN(),
                                 kInfinity,
                                 -kInfinity,
                                 0.0f,
                                 -0.0f,
                                 std::numeric_limits<float>::denorm_min(),
                                 std::numeric_limits<float>::min(),
                                 std::numeric_limits<float>::max(),
                                 -std::numeric_limits<float>::max(),
                                 1e-30f,
                                 1e30f,
                                 2147483648.0f,
                                 -2147483904.0f};

}  // namespace

int FuzzValues::Dimension(int usual) {
  usual = std::max(1, usual);
  switch (Choice(8)) {
    case 0: return Pick(m_provider, kEdgeSizes);
    case 1: return m_provider.ConsumeIntegral<int>();
    default: return m_provider.ConsumeIntegralInRange(1, usual);
  }
}

int FuzzValues::Coordinate(int usual) {
  usual = std::max(0, usual);
  switch (Choice(8)) {
    case 0: return Pick(m_provider, kEdgeCoordinates);
    case 1: return m_provider.ConsumeIntegral<int>();
    default: return m_provider.ConsumeIntegralInRange(0, usual);
  }
}

int FuzzValues::Format() {
  switch (Choice(8)) {
    case 0: return Pick(m_provider, kOddFormats);
    case 1: return m_provider.ConsumeIntegral<int>();
    default: return Pick(m_provider, kFormats);
  }
}

int FuzzValues::Pitch(int rowBytes) {
  const long long row = rowBytes;
  long long pitch = 0;
  switch (Choice(12)) {
    case 0: pitch = row - m_provider.ConsumeIntegralInRange(1, 8); break;
    case 1: pitch = Bool() ? 0 : -row; break;
    case 2: return m_provider.ConsumeIntegral<int>();
    default: pitch = row + m_provider.ConsumeIntegralInRange(0, 32); break;
  }
  return static_cast<int>(std::clamp<long long>(pitch, INT_MIN, INT_MAX));
}

float FuzzValues::Float(float low, float high) {
  switch (Choice(8)) {
    case 0: return Pick(m_provider, kEdgeFloats);
    case 1: {
      const uint32_t bits = m_provider.ConsumeIntegral<uint32_t>();
      float value;
      std::memcpy(&value, &bits, sizeof(value));
      return value;
    }
    default: return m_provider.ConsumeFloatingPointInRange(low, high);
  }
}

std::string FuzzValues::Text(size_t maxLength) {
  return m_provider.ConsumeRandomLengthString(maxLength);
}
