// YuvMatrix: the transform between two YUV matrices and ranges, derived from the luma weights
// of the standards and applied in 14-bit fixed point.
#include "YuvMatrix.h"

#include <algorithm>
#include <cmath>
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

void WriteLumaRow(const Row& luma, const uint8_t* in, const int* chromaTerms, int chromaShift,
                  int width, uint8_t* out) {
  for (int x = 0; x < width; ++x) {
    const int value = (luma.y * in[x] + chromaTerms[x >> chromaShift]) >> kShift;
    out[x] = static_cast<uint8_t>(std::clamp(value, 0, 255));
  }
}

void WriteChromaRow(const Coefficients& k, const uint8_t* u, const uint8_t* v, int count,
                    uint8_t* outU, uint8_t* outV) {
  for (int cx = 0; cx < count; ++cx) {
    outU[cx] = Apply(k.rows[1], 0, u[cx] - 128, v[cx] - 128);
    outV[cx] = Apply(k.rows[2], 0, u[cx] - 128, v[cx] - 128);
  }
}

}  // namespace

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
                const ColourSpace_t& colour, AVFrame& target) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  const Coefficients k = CoefficientsFor(colour);
  const int chromaWidth = AV_CEIL_RSHIFT(width, desc.log2_chroma_w);
  std::vector<int> chromaTerm(static_cast<size_t>(chromaWidth));
  for (int y = 0; y < height; ++y) {
    const int cy = y >> desc.log2_chroma_h;
    const uint8_t* u = source.data[1] + static_cast<ptrdiff_t>(cy) * source.linesize[1];
    const uint8_t* v = source.data[2] + static_cast<ptrdiff_t>(cy) * source.linesize[2];
    const bool firstOfChromaRow = y == cy << desc.log2_chroma_h;
    if (firstOfChromaRow) {
      FillChromaTerms(k, u, v, chromaWidth, chromaTerm.data());
      WriteChromaRow(k, u, v, chromaWidth, target.data[1] + cy * target.linesize[1],
                     target.data[2] + cy * target.linesize[2]);
    }
    WriteLumaRow(k.rows[0], source.data[0] + static_cast<ptrdiff_t>(y) * source.linesize[0],
                 chromaTerm.data(), desc.log2_chroma_w, width,
                 target.data[0] + static_cast<ptrdiff_t>(y) * target.linesize[0]);
  }
}
