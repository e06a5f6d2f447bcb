// Picture copies: table rows in, edges repeated out to FFmpeg's plane sizes.
#include "PictureCopy.h"

#include <cstddef>
#include <cstring>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "AvPixelFormats.h"
#include "CPixelLayout.h"
#include "PixelFormat.h"

namespace {

constexpr unsigned char kNeutralChroma = 128;

// Byte offsets of Y0, U, Y1 and V inside one packed 4:2:2 pair.
struct PairOrder {
  int y0;
  int u;
  int y1;
  int v;
};

// Extends the `rowBytes` x `rows` block at the top left of a plane to `fullRowBytes` x
// `fullRows` by repeating its last sample (`step` bytes) and its last row.
void ExtendPlane(uint8_t* data, int linesize, int rowBytes, int rows, int fullRowBytes,
                 int fullRows, int step) {
  for (int y = 0; y < rows; ++y) {
    uint8_t* row = data + static_cast<ptrdiff_t>(y) * linesize;
    for (int x = rowBytes; x < fullRowBytes; ++x) {
      row[x] = rowBytes >= step ? row[x - step] : kNeutralChroma;
    }
  }
  for (int y = rows; y < fullRows; ++y) {
    uint8_t* row = data + static_cast<ptrdiff_t>(y) * linesize;
    if (rows > 0) {
      std::memcpy(row, row - linesize, fullRowBytes);
    } else {
      std::memset(row, kNeutralChroma, fullRowBytes);
    }
  }
}

void ImportPlanar(const unsigned char* const* planes, const int* pitches,
                  const CPixelLayout& layout, AVFrame& target) {
  const uint8_t* data[4] = {};
  int linesizes[4] = {};
  int rowBytes[4] = {};
  int rows[4] = {};
  for (int plane = 0; plane < layout.GetPlaneCount(); ++plane) {
    const int caller = CallerPlane(layout.GetFormat(), plane);
    data[plane] = planes[caller];
    linesizes[plane] = pitches[caller];
    rowBytes[plane] = layout.GetRowBytes(caller);
    rows[plane] = layout.GetRows(caller);
  }
  CopyExtended(data, linesizes, rowBytes, rows, target);
}

// One packed 4:2:2 row into planar rows; an odd width ends in half a pair that has Y and U.
void UnpackRow(const unsigned char* packed, int width, const PairOrder& order, uint8_t* y,
               uint8_t* u, uint8_t* v) {
  for (int pair = 0; pair < width / 2; ++pair) {
    const unsigned char* bytes = packed + pair * 4;
    y[2 * pair] = bytes[order.y0];
    y[2 * pair + 1] = bytes[order.y1];
    u[pair] = bytes[order.u];
    v[pair] = bytes[order.v];
  }
  if (width % 2 == 0) return;
  const int last = width / 2;
  const unsigned char* half = packed + last * 4;
  // Of a half pair only its first two bytes exist: Y0 U (YUYV) or U Y0 (UYVY).
  y[width - 1] = half[order.y0];
  u[last] = half[order.u];
  v[last] = last > 0 ? v[last - 1] : kNeutralChroma;
}

void ImportPacked(const unsigned char* plane, int pitch, const PairOrder& order, AVFrame& target) {
  for (int row = 0; row < target.height; ++row) {
    UnpackRow(plane + static_cast<ptrdiff_t>(row) * pitch, target.width, order,
              target.data[0] + static_cast<ptrdiff_t>(row) * target.linesize[0],
              target.data[1] + static_cast<ptrdiff_t>(row) * target.linesize[1],
              target.data[2] + static_cast<ptrdiff_t>(row) * target.linesize[2]);
  }
}

}  // namespace

AVPixelFormat RawStorageFormat(int format) {
  if (format == PIXEL_FORMAT_YUYV || format == PIXEL_FORMAT_UYVY) return AV_PIX_FMT_YUV422P;
  return ToAvPixelFormat(format);
}

bool EnsurePictureBuffer(AVFrame& frame, AVPixelFormat format, int width, int height) {
  if (frame.data[0] && frame.format == format && frame.width == width && frame.height == height) {
    return true;
  }
  av_frame_unref(&frame);
  frame.format = format;
  frame.width = width;
  frame.height = height;
  return av_frame_get_buffer(&frame, 0) >= 0;
}

void ImportRawFrame(const unsigned char* const* planes, const int* pitches,
                    const CPixelLayout& layout, AVFrame& target) {
  switch (layout.GetFormat()) {
    case PIXEL_FORMAT_YUYV: ImportPacked(planes[0], pitches[0], {0, 1, 2, 3}, target); break;
    case PIXEL_FORMAT_UYVY: ImportPacked(planes[0], pitches[0], {1, 0, 3, 2}, target); break;
    default: ImportPlanar(planes, pitches, layout, target); break;
  }
}

void CopyPlaneRows(uint8_t* target, int targetPitch, const uint8_t* source, int sourcePitch,
                   int rowBytes, int rows) {
  if (rowBytes < 1 || rows < 1) return;
  av_image_copy_plane(target, targetPitch, source, sourcePitch, rowBytes, rows);
}

void CopyExtended(const uint8_t* const* data, const int* linesizes, const int* rowBytes,
                  const int* rows, AVFrame& target) {
  const auto format = static_cast<AVPixelFormat>(target.format);
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  int fullRowBytes[4];
  int steps[4];
  av_image_fill_linesizes(fullRowBytes, format, target.width);
  av_image_fill_max_pixsteps(steps, nullptr, &desc);
  for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
    CopyPlaneRows(target.data[plane], target.linesize[plane], data[plane], linesizes[plane],
                  rowBytes[plane], rows[plane]);
    const int shift = plane == 0 || plane == 3 ? 0 : desc.log2_chroma_h;
    ExtendPlane(target.data[plane], target.linesize[plane], rowBytes[plane], rows[plane],
                fullRowBytes[plane], AV_CEIL_RSHIFT(target.height, shift), steps[plane]);
  }
}
