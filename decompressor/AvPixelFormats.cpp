// Pixel-format code lookups between the library's codes and FFmpeg's formats.
#include "AvPixelFormats.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "PixelFormat.h"

AVPixelFormat ToAvPixelFormat(int format) {
  switch (format) {
    case PIXEL_FORMAT_I420:
    case PIXEL_FORMAT_YV12: return AV_PIX_FMT_YUV420P;
    case PIXEL_FORMAT_YUYV: return AV_PIX_FMT_YUYV422;
    case PIXEL_FORMAT_RGB24: return AV_PIX_FMT_RGB24;
    case PIXEL_FORMAT_BGR24: return AV_PIX_FMT_BGR24;
    case PIXEL_FORMAT_YUV422P: return AV_PIX_FMT_YUV422P;
    case PIXEL_FORMAT_RGBA32: return AV_PIX_FMT_RGBA;
    case PIXEL_FORMAT_UYVY: return AV_PIX_FMT_UYVY422;
    case PIXEL_FORMAT_NV12: return AV_PIX_FMT_NV12;
    default: return AV_PIX_FMT_NONE;
  }
}

bool IsRgbFormat(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  return desc && (desc->flags & AV_PIX_FMT_FLAG_RGB);
}

int CallerPlane(int format, int plane) {
  if (format == PIXEL_FORMAT_YV12 && (plane == 1 || plane == 2)) return 3 - plane;
  return plane;
}

AvSourceFormat DescribeSource(const AVFrame& frame) {
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const bool flagged = frame.color_range == AVCOL_RANGE_JPEG;
  switch (format) {
    case AV_PIX_FMT_YUVJ420P: return {AV_PIX_FMT_YUV420P, true};
    case AV_PIX_FMT_YUVJ422P: return {AV_PIX_FMT_YUV422P, true};
    case AV_PIX_FMT_YUVJ444P: return {AV_PIX_FMT_YUV444P, true};
    case AV_PIX_FMT_YUVJ440P: return {AV_PIX_FMT_YUV440P, true};
    case AV_PIX_FMT_YUVJ411P: return {AV_PIX_FMT_YUV411P, true};
    default: return {format, flagged};
  }
}
