// How the library's pixel-format codes map onto FFmpeg's pixel formats. Internal (not
// installed); pure lookups, no state.
//
// YV12 is stored by FFmpeg as yuv420p with the second and third planes exchanged, so a frame
// buffer of YV12 and an FFmpeg picture differ only in which caller plane holds U and V.
// Decoders deliver JPEG-range pictures either as the deprecated "J" formats or with a range
// flag; both are described here as a plain format plus a full-range flag.
#pragma once

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

// FFmpeg's format for a pixel-format code; AV_PIX_FMT_NONE for an unknown code.
AVPixelFormat ToAvPixelFormat(int format);

// Whether FFmpeg's `format` holds RGB samples (which carry no YUV matrix or range).
bool IsRgbFormat(AVPixelFormat format);

// The caller's plane that carries plane `plane` of the FFmpeg picture of `format`.
int CallerPlane(int format, int plane);

// A picture's format without the "J" variants, and whether its samples span the full range.
struct AvSourceFormat {
  AVPixelFormat format;
  bool fullRange;
};
AvSourceFormat DescribeSource(const AVFrame& frame);
