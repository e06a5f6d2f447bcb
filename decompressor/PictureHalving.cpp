// PictureHalving: 2 x 2 box means per plane, row pair by row pair.
#include "PictureHalving.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "PictureCopy.h"

namespace {

// One output row from two source rows, for the `count` outputs whose 2 x 2 block lies inside
// the row. Vectorised; built for AVX2 and the baseline.
__attribute__((target_clones("avx2", "default"))) void HalveRowPairs(const uint8_t* top,
                                                                     const uint8_t* bottom,
                                                                     int count, uint8_t* out) {
  for (int x = 0; x < count; ++x) {
    const int sum = top[2 * x] + top[2 * x + 1] + bottom[2 * x] + bottom[2 * x + 1];
    out[x] = static_cast<uint8_t>((sum + 2) >> 2);
  }
}

// A plane of `width` x `height` samples into one of `halfWidth` x `halfHeight`. A block
// reaching past the last column or row takes that column or row twice.
void HalvePlane(const uint8_t* source, int pitch, int width, int height, uint8_t* target,
                int targetPitch, int halfWidth, int halfHeight) {
  const int inside = std::min(halfWidth, width / 2);
  for (int y = 0; y < halfHeight; ++y) {
    const uint8_t* top = source + static_cast<ptrdiff_t>(std::min(2 * y, height - 1)) * pitch;
    const uint8_t* bottom =
        source + static_cast<ptrdiff_t>(std::min(2 * y + 1, height - 1)) * pitch;
    uint8_t* out = target + static_cast<ptrdiff_t>(y) * targetPitch;
    HalveRowPairs(top, bottom, inside, out);
    for (int x = inside; x < halfWidth; ++x) {
      const int left = std::min(2 * x, width - 1);
      const int right = std::min(2 * x + 1, width - 1);
      out[x] =
          static_cast<uint8_t>((top[left] + top[right] + bottom[left] + bottom[right] + 2) >> 2);
    }
  }
}

}  // namespace

bool HalvePicture(const PlaneView& source, AVPixelFormat format, int width, int height,
                  AVFrame& target) {
  const int halfWidth = width / 2;
  const int halfHeight = height / 2;
  if (!EnsurePictureBuffer(target, format, halfWidth, halfHeight)) return false;
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  for (int plane = 0; plane < 3; ++plane) {
    const int shiftW = plane == 0 ? 0 : desc.log2_chroma_w;
    const int shiftH = plane == 0 ? 0 : desc.log2_chroma_h;
    HalvePlane(source.data[plane], source.linesize[plane], AV_CEIL_RSHIFT(width, shiftW),
               AV_CEIL_RSHIFT(height, shiftH), target.data[plane], target.linesize[plane],
               AV_CEIL_RSHIFT(halfWidth, shiftW), AV_CEIL_RSHIFT(halfHeight, shiftH));
  }
  return true;
}
