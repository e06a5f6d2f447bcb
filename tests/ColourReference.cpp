// Reference conversions in floating point: BT.601 limited range with the GL programs'
// constants, and any matrix and range from its luma weights.
#include "ColourReference.h"

#include <algorithm>
#include <cmath>

namespace {

int Clamp8(double value) { return static_cast<int>(std::clamp(std::lround(value), 0L, 255L)); }

// The quantisation of one range: Y scale, Y offset, U and V scale.
struct Quantisation {
  double luma;
  double offset;
  double chroma;
};

Quantisation QuantisationOf(bool fullRange) {
  return fullRange ? Quantisation{255, 0, 255} : Quantisation{219, 16, 224};
}

}  // namespace

Rgb ReferenceYuvToRgb(const Yuv& yuv) {
  const double y = 1.1643 * (yuv.y - 16);
  const double u = yuv.u - 128;
  const double v = yuv.v - 128;
  return Rgb{Clamp8(y + 1.5958 * v), Clamp8(y - 0.39173 * u - 0.8129 * v), Clamp8(y + 2.017 * u)};
}

Yuv ReferenceRgbToYuv(const Rgb& rgb) {
  const ExactYuv exact = ReferenceRgbToExactYuv(rgb);
  return Yuv{Clamp8(exact.y), Clamp8(exact.u), Clamp8(exact.v)};
}

ExactYuv ReferenceRgbToExactYuv(const Rgb& rgb) {
  const double r = rgb.r;
  const double g = rgb.g;
  const double b = rgb.b;
  return ExactYuv{16 + (65.481 * r + 128.553 * g + 24.966 * b) / 255,
                  128 + (-37.797 * r - 74.203 * g + 112.0 * b) / 255,
                  128 + (112.0 * r - 93.786 * g - 18.214 * b) / 255};
}

Yuv ReferenceRgbToYuv(const Rgb& rgb, const LumaWeights& weights, bool fullRange) {
  const double r = rgb.r / 255.0;
  const double g = rgb.g / 255.0;
  const double b = rgb.b / 255.0;
  const double y = weights.kr * r + (1 - weights.kr - weights.kb) * g + weights.kb * b;
  const double u = (b - y) / (2 * (1 - weights.kb));
  const double v = (r - y) / (2 * (1 - weights.kr));
  const Quantisation q = QuantisationOf(fullRange);
  return Yuv{Clamp8(q.offset + q.luma * y), Clamp8(128 + q.chroma * u), Clamp8(128 + q.chroma * v)};
}

Rgb ReferenceYuvToRgb(const Yuv& yuv, const LumaWeights& weights, bool fullRange) {
  const Quantisation q = QuantisationOf(fullRange);
  const double y = (yuv.y - q.offset) / q.luma;
  const double u = (yuv.u - 128) / q.chroma;
  const double v = (yuv.v - 128) / q.chroma;
  const double r = y + 2 * (1 - weights.kr) * v;
  const double b = y + 2 * (1 - weights.kb) * u;
  const double g = (y - weights.kr * r - weights.kb * b) / (1 - weights.kr - weights.kb);
  return Rgb{Clamp8(255 * r), Clamp8(255 * g), Clamp8(255 * b)};
}
