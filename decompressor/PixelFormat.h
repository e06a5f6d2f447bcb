// Pixel-format codes understood by the decoder and by every renderer back-end.
//
// A frame travels as three plane pointers and three pitches (bytes per row); unused planes
// are null with pitch 0. The codes are plain ints because hosts store and pass them as such.
// Codes 5 and 7 to 20 are not used: every operation treats them as unsupported.
#pragma once

enum : int {
  PIXEL_FORMAT_NONE = -1,    // no usable format
  PIXEL_FORMAT_I420 = 0,     // Y (w x h), U (w/2 x h/2), V (w/2 x h/2)
  PIXEL_FORMAT_YUYV = 1,     // packed 4:2:2, bytes Y0 U Y1 V
  PIXEL_FORMAT_RGB24 = 2,    // R, G, B
  PIXEL_FORMAT_BGR24 = 3,    // B, G, R
  PIXEL_FORMAT_YUV422P = 4,  // Y (w x h), U (w/2 x h), V (w/2 x h)
  PIXEL_FORMAT_RGBA32 = 6,   // R, G, B, A
  PIXEL_FORMAT_UYVY = 21,    // packed 4:2:2, bytes U Y0 V Y1
  PIXEL_FORMAT_NV12 = 22,    // Y (w x h), interleaved U/V pairs (w/2 pairs x h/2 rows)
  PIXEL_FORMAT_YV12 = 23,    // as I420 with the second plane V and the third U
};

// True for the codes listed above except PIXEL_FORMAT_NONE.
inline bool IsKnownPixelFormat(int format) {
  switch (format) {
    case PIXEL_FORMAT_I420:
    case PIXEL_FORMAT_YUYV:
    case PIXEL_FORMAT_RGB24:
    case PIXEL_FORMAT_BGR24:
    case PIXEL_FORMAT_YUV422P:
    case PIXEL_FORMAT_RGBA32:
    case PIXEL_FORMAT_UYVY:
    case PIXEL_FORMAT_NV12:
    case PIXEL_FORMAT_YV12: return true;
    default: return false;
  }
}

// The RGB family {RGB24, BGR24, RGBA32}.
inline bool IsRgbPixelFormat(int format) {
  return format == PIXEL_FORMAT_RGB24 || format == PIXEL_FORMAT_BGR24 ||
         format == PIXEL_FORMAT_RGBA32;
}
