// Reference BT.601 limited-range conversions in floating point.
#include "ColourReference.h"

#include <algorithm>
#include <cmath>

namespace {

int Clamp8(double value) { return static_cast<int>(std::clamp(std::lround(value), 0L, 255L)); }

}  // namespace

Rgb ReferenceYuvToRgb(const Yuv& yuv) {
  const double y = 1.1643 * (yuv.y - 16);
  const double u = yuv.u - 128;
  const double v = yuv.v - 128;
  return Rgb{Clamp8(y + 1.5958 * v), Clamp8(y - 0.39173 * u - 0.8129 * v), Clamp8(y + 2.017 * u)};
}

Yuv ReferenceRgbToYuv(const Rgb& rgb) {
  const double r = rgb.r;
  const double g = rgb.g;
  const double b = rgb.b;
  return Yuv{Clamp8(16 + (65.481 * r + 128.553 * g + 24.966 * b) / 255),
             Clamp8(128 + (-37.797 * r - 74.203 * g + 112.0 * b) / 255),
             Clamp8(128 + (112.0 * r - 93.786 * g - 18.214 * b) / 255)};
}
