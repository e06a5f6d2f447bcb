// Colour lookups between FFmpeg's signalled fields, the library's colour types and libswscale.
#include "AvColour.h"

#include <cstring>

extern "C" {
#include <libswscale/swscale.h>
}

#include "AvPixelFormats.h"

namespace {

bool IsHdSize(const AVFrame& picture) { return picture.width >= 1280 || picture.height >= 720; }

ColourMatrix SignalledMatrix(AVColorSpace space) {
  switch (space) {
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_FCC: return ColourMatrix::kBt601;
    case AVCOL_SPC_BT709:
    case AVCOL_SPC_SMPTE240M: return ColourMatrix::kBt709;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return ColourMatrix::kBt2020;
    default: return ColourMatrix::kFromStream;
  }
}

// Puts `unspecified` in `field` when its raw value lies outside [0, count).
template <typename Field>
void ForgetUnknown(Field& field, int count, Field unspecified) {
  static_assert(sizeof(Field) == sizeof(int), "FFmpeg's colour enumerations are int-sized");
  int raw = 0;
  std::memcpy(&raw, &field, sizeof raw);
  if (raw < 0 || raw >= count) field = unspecified;
}

}  // namespace

void ForgetUnknownColourCodes(AVFrame& picture) {
  ForgetUnknown(picture.colorspace, AVCOL_SPC_NB, AVCOL_SPC_UNSPECIFIED);
  ForgetUnknown(picture.color_range, AVCOL_RANGE_NB, AVCOL_RANGE_UNSPECIFIED);
  ForgetUnknown(picture.color_primaries, AVCOL_PRI_NB, AVCOL_PRI_UNSPECIFIED);
  ForgetUnknown(picture.color_trc, AVCOL_TRC_NB, AVCOL_TRC_UNSPECIFIED);
}

ColourSpace_t ColourOf(const AVFrame& picture) {
  ColourMatrix matrix = SignalledMatrix(picture.colorspace);
  if (matrix == ColourMatrix::kFromStream) {
    matrix = IsHdSize(picture) ? ColourMatrix::kBt709 : ColourMatrix::kBt601;
  }
  const bool full = DescribeSource(picture).fullRange;
  return ColourSpace_t{matrix, full ? ColourRange::kFull : ColourRange::kLimited};
}

ColourSpace_t WithOverride(const ColourSpace_t& picture, const ColourSpace_t& override) {
  ColourSpace_t result = picture;
  if (override.matrix != ColourMatrix::kFromStream) result.matrix = override.matrix;
  if (override.range != ColourRange::kFromStream) result.range = override.range;
  return result;
}

int SwsMatrix(ColourMatrix matrix) {
  switch (matrix) {
    case ColourMatrix::kBt709: return SWS_CS_ITU709;
    case ColourMatrix::kBt2020: return SWS_CS_BT2020;
    default: return SWS_CS_ITU601;
  }
}

AVColorSpace AvMatrix(ColourMatrix matrix) {
  switch (matrix) {
    case ColourMatrix::kBt709: return AVCOL_SPC_BT709;
    case ColourMatrix::kBt2020: return AVCOL_SPC_BT2020_NCL;
    default: return AVCOL_SPC_SMPTE170M;
  }
}

AVColorRange AvRange(ColourRange range) {
  return range == ColourRange::kFull ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
}
