// YuvMatrix: the transforms between two YUV matrices and ranges and from YUV into RGB, derived
// from the luma weights of the standards and applied in fixed point.
#include "YuvMatrix.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "AvColour.h"

namespace {

constexpr int kShift = 14;
constexpr int kHalf = 1 << (kShift - 1);

struct Weights {
  double kr;
  double kb;
};

Weights WeightsOf(ColourMatrix matrix) {
  switch (matrix) {
    case ColourMatrix::kBt709: return {0.2126, 0.0722};
    case ColourMatrix::kBt2020: return {0.2627, 0.0593};
    default: return {0.299, 0.114};
  }
}

// The quantisation of a range: luma offset and scale, chroma scale.
struct Quantisation {
  double offset;
  double luma;
  double chroma;
};

Quantisation QuantisationOf(ColourRange range) {
  return range == ColourRange::kFull ? Quantisation{0, 255, 255} : Quantisation{16, 219, 224};
}

// Normalised Y, U, V of one matrix into those of another, through R', G', B'.
void Transform(const Weights& from, const Weights& to, const double in[3], double out[3]) {
  const double r = in[0] + 2 * (1 - from.kr) * in[2];
  const double b = in[0] + 2 * (1 - from.kb) * in[1];
  const double g = (in[0] - from.kr * r - from.kb * b) / (1 - from.kr - from.kb);
  out[0] = to.kr * r + (1 - to.kr - to.kb) * g + to.kb * b;
  out[1] = (b - out[0]) / (2 * (1 - to.kb));
  out[2] = (r - out[0]) / (2 * (1 - to.kr));
}

// Output sample = offset + (yCoef (Y - yOffset) + uCoef (U - 128) + vCoef (V - 128)) >> kShift.
struct Row {
  int offset;
  int y;
  int u;
  int v;
};

struct Coefficients {
  int yOffset;
  Row rows[3];  // Y, U, V
};

Coefficients CoefficientsFor(const ColourSpace_t& colour) {
  const Quantisation in = QuantisationOf(colour.range);
  const Quantisation out = QuantisationOf(kDeliveredColour.range);
  const Weights from = WeightsOf(colour.matrix);
  const Weights to = WeightsOf(kDeliveredColour.matrix);
  double columns[3][3];
  for (int c = 0; c < 3; ++c) {
    const double unit[3] = {c == 0 ? 1.0 : 0.0, c == 1 ? 1.0 : 0.0, c == 2 ? 1.0 : 0.0};
    Transform(from, to, unit, columns[c]);
  }
  const double inScale[3] = {in.luma, in.chroma, in.chroma};
  const double outScale[3] = {out.luma, out.chroma, out.chroma};
  Coefficients coefficients{static_cast<int>(in.offset), {}};
  for (int row = 0; row < 3; ++row) {
    int fixed[3];
    for (int c = 0; c < 3; ++c) {
      fixed[c] = static_cast<int>(
          std::lround(columns[c][row] * outScale[row] / inScale[c] * (1 << kShift)));
    }
    const int offset = row == 0 ? static_cast<int>(out.offset) : 128;
    coefficients.rows[row] = Row{offset, fixed[0], fixed[1], fixed[2]};
  }
  return coefficients;
}

uint8_t Apply(const Row& row, int y, int u, int v) {
  const int value = row.offset + ((row.y * y + row.u * u + row.v * v + kHalf) >> kShift);
  return static_cast<uint8_t>(std::clamp(value, 0, 255));
}

// Per chroma sample of a row: all of the luma output but the luma term, before the shift.
void FillChromaTerms(const Coefficients& k, const uint8_t* u, const uint8_t* v, int count,
                     int* terms) {
  const Row& luma = k.rows[0];
  const int constant = (luma.offset << kShift) + kHalf - luma.y * k.yOffset;
  for (int cx = 0; cx < count; ++cx) {
    terms[cx] = constant + luma.u * (u[cx] - 128) + luma.v * (v[cx] - 128);
  }
}

// `chromaTerms` holds one term per luma sample. Vectorised; built for AVX2 and the baseline.
__attribute__((target_clones("avx2", "default"))) void WriteLumaRow(const Row& luma,
                                                                    const uint8_t* in,
                                                                    const int* chromaTerms,
                                                                    int width, uint8_t* out) {
  for (int x = 0; x < width; ++x) {
    const int value = (luma.y * in[x] + chromaTerms[x]) >> kShift;
    out[x] = static_cast<uint8_t>(std::clamp(value, 0, 255));
  }
}

// Spreads per-chroma-sample values over the `width` luma samples they cover.
template <typename T>
void Spread(const T* chroma, int shift, int width, T* spread) {
  for (int x = 0; x < width; ++x) spread[x] = chroma[x >> shift];
}

void WriteChromaRow(const Coefficients& k, const uint8_t* u, const uint8_t* v, int count,
                    uint8_t* outU, uint8_t* outV) {
  for (int cx = 0; cx < count; ++cx) {
    outU[cx] = Apply(k.rows[1], 0, u[cx] - 128, v[cx] - 128);
    outV[cx] = Apply(k.rows[2], 0, u[cx] - 128, v[cx] - 128);
  }
}

// Into RGB, with 16 fraction bits: R = yScale (Y - yOffset) + rv (V - 128), G = ... - gu (U -
// 128) - gv (V - 128), B = ... + bu (U - 128).
constexpr int kRgbShift = 16;

struct RgbCoefficients {
  int yScale;
  int yOffset;
  int rv;
  int gu;
  int gv;
  int bu;
};

RgbCoefficients RgbCoefficientsFor(const ColourSpace_t& colour) {
  const Quantisation q = QuantisationOf(colour.range);
  const Weights w = WeightsOf(colour.matrix);
  const double kg = 1 - w.kr - w.kb;
  const double chroma = 255.0 / q.chroma;
  const auto fixed = [](double value) { return static_cast<int>(std::lround(value * 65536)); };
  return RgbCoefficients{fixed(255.0 / q.luma),
                         static_cast<int>(q.offset),
                         fixed(2 * (1 - w.kr) * chroma),
                         fixed(2 * (1 - w.kb) * w.kb / kg * chroma),
                         fixed(2 * (1 - w.kr) * w.kr / kg * chroma),
                         fixed(2 * (1 - w.kb) * chroma)};
}

// The three channels of one pixel from its samples, rounded and clamped.
struct Channels {
  int r;
  int g;
  int b;
};

inline Channels ToRgb(const RgbCoefficients& k, int luma, int blue, int red) {
  const int y = (luma - k.yOffset) * k.yScale + (1 << (kRgbShift - 1));
  const int u = blue - 128;
  const int v = red - 128;
  return Channels{std::clamp((y + k.rv * v) >> kRgbShift, 0, 255),
                  std::clamp((y - k.gu * u - k.gv * v) >> kRgbShift, 0, 255),
                  std::clamp((y + k.bu * u) >> kRgbShift, 0, 255)};
}

// One row of 4:4:4 samples into three-byte pixels, red at byte kRed and blue at byte kBlue.
// Written so that the compiler vectorises it.
template <int kRed, int kBlue>
__attribute__((always_inline)) inline void WriteRgb24Pixels(const uint8_t* y, const uint8_t* u,
                                                            const uint8_t* v, int width,
                                                            const RgbCoefficients& k,
                                                            uint8_t* out) {
  for (int x = 0; x < width; ++x) {
    const Channels c = ToRgb(k, y[x], u[x], v[x]);
    out[3 * x + kRed] = static_cast<uint8_t>(c.r);
    out[3 * x + 1] = static_cast<uint8_t>(c.g);
    out[3 * x + kBlue] = static_cast<uint8_t>(c.b);
  }
}

// Where byte n of a word stored in memory sits in its value.
constexpr int ByteShift(int n) {
  return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? 8 * n : 8 * (3 - n);
}

// The same into RGBA, each pixel stored as one word (bytes R, G, B, 255 in memory order),
// which the compiler vectorises where it does not vectorise four byte stores.
__attribute__((always_inline)) inline void WriteRgbaPixels(const uint8_t* y, const uint8_t* u,
                                                           const uint8_t* v, int width,
                                                           const RgbCoefficients& k, uint8_t* out) {
  for (int x = 0; x < width; ++x) {
    const Channels c = ToRgb(k, y[x], u[x], v[x]);
    const uint32_t word = static_cast<uint32_t>(c.r) << ByteShift(0) |
                          static_cast<uint32_t>(c.g) << ByteShift(1) |
                          static_cast<uint32_t>(c.b) << ByteShift(2) | 255u << ByteShift(3);
    std::memcpy(out + 4 * x, &word, sizeof word);
  }
}

// One row into `target` (RGB24, BGR24 or RGBA), built for AVX2 and the baseline. The loops
// above are inlined here rather than cloned themselves: clang clones plain functions only,
// not templates.
__attribute__((target_clones("avx2", "default"))) void WriteRgbRow(
    const uint8_t* y, const uint8_t* u, const uint8_t* v, int width, const RgbCoefficients& k,
    AVPixelFormat target, uint8_t* out) {
  switch (target) {
    case AV_PIX_FMT_RGB24: return WriteRgb24Pixels<0, 2>(y, u, v, width, k, out);
    case AV_PIX_FMT_BGR24: return WriteRgb24Pixels<2, 0>(y, u, v, width, k, out);
    default: return WriteRgbaPixels(y, u, v, width, k, out);
  }
}

}  // namespace

bool CanConvertYuvToRgb(AVPixelFormat source, AVPixelFormat target) {
  const bool rgb =
      target == AV_PIX_FMT_RGB24 || target == AV_PIX_FMT_BGR24 || target == AV_PIX_FMT_RGBA;
  return rgb && CanRewriteYuv(source);
}

void ConvertYuvToRgb(const PlaneView& source, AVPixelFormat format, int width, int height,
                     const ColourSpace_t& colour, AVPixelFormat target, uint8_t* rgb, int pitch) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  const RgbCoefficients k = RgbCoefficientsFor(colour);
  const bool spread = desc.log2_chroma_w > 0;
  std::vector<uint8_t> spreadU(spread ? static_cast<size_t>(width) : 0);
  std::vector<uint8_t> spreadV(spreadU.size());
  for (int y = 0; y < height; ++y) {
    const int cy = y >> desc.log2_chroma_h;
    const uint8_t* u = source.data[1] + static_cast<ptrdiff_t>(cy) * source.linesize[1];
    const uint8_t* v = source.data[2] + static_cast<ptrdiff_t>(cy) * source.linesize[2];
    if (spread) {
      // A chroma row serves 1 << log2_chroma_h luma rows in turn: spread it once.
      if (y == cy << desc.log2_chroma_h) {
        Spread(u, desc.log2_chroma_w, width, spreadU.data());
        Spread(v, desc.log2_chroma_w, width, spreadV.data());
      }
      u = spreadU.data();
      v = spreadV.data();
    }
    WriteRgbRow(source.data[0] + static_cast<ptrdiff_t>(y) * source.linesize[0], u, v, width, k,
                target, rgb + static_cast<ptrdiff_t>(y) * pitch);
  }
}

bool CanRewriteYuv(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  if (!desc || desc->nb_components != 3 || !(desc->flags & AV_PIX_FMT_FLAG_PLANAR)) return false;
  if (desc->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL)) {
    return false;
  }
  for (int c = 0; c < 3; ++c) {
    if (desc->comp[c].depth != 8 || desc->comp[c].plane != c) return false;
  }
  return true;
}

void RewriteYuv(const PlaneView& source, AVPixelFormat format, int width, int height,
                const ColourSpace_t& colour, const YuvTarget& target) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  const Coefficients k = CoefficientsFor(colour);
  const int chromaWidth = AV_CEIL_RSHIFT(width, desc.log2_chroma_w);
  std::vector<int> chromaTerm(static_cast<size_t>(chromaWidth));
  std::vector<int> lumaTerm(static_cast<size_t>(width));
  for (int y = 0; y < height; ++y) {
    const int cy = y >> desc.log2_chroma_h;
    const uint8_t* u = source.data[1] + static_cast<ptrdiff_t>(cy) * source.linesize[1];
    const uint8_t* v = source.data[2] + static_cast<ptrdiff_t>(cy) * source.linesize[2];
    const bool firstOfChromaRow = y == cy << desc.log2_chroma_h;
    if (firstOfChromaRow) {
      FillChromaTerms(k, u, v, chromaWidth, chromaTerm.data());
      Spread(chromaTerm.data(), desc.log2_chroma_w, width, lumaTerm.data());
      // A target one sample wide or high has chroma planes of no bytes, which the caller may
      // leave null: nothing to write there, and no row address to form.
      if (cy < target.chromaRows && target.chromaWidth > 0) {
        WriteChromaRow(
            k, u, v, target.chromaWidth,
            target.planes.data[1] + static_cast<ptrdiff_t>(cy) * target.planes.linesize[1],
            target.planes.data[2] + static_cast<ptrdiff_t>(cy) * target.planes.linesize[2]);
      }
    }
    WriteLumaRow(k.rows[0], source.data[0] + static_cast<ptrdiff_t>(y) * source.linesize[0],
                 lumaTerm.data(), width,
                 target.planes.data[0] + static_cast<ptrdiff_t>(y) * target.planes.linesize[0]);
  }
}
