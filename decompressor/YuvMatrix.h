// Re-expressing 8-bit planar YUV samples of any matrix and range: as the delivered BT.601
// limited range at the same format and size, or as RGB at the same size. Internal (not
// installed).
//
// libswscale changes the matrix of YUV samples only through 16-bit RGB, which costs about ten
// times as much as the direct step here: a 3 x 3 transform in fixed point, where each luma
// sample takes the chroma sample that covers it. Its accurate road into RGB (full chroma
// interpolation, accurate rounding) runs in C and costs five to ten times as much as the RGB
// step here, which is as accurate (fixed point with 16 fraction bits, rounded once) and lets
// the compiler vectorise it (built for AVX2 and for the baseline, picked at run time). Neither
// scales nor changes YUV formats (CScaler does), and neither takes packed, semi-planar or
// deeper formats (those go through libswscale).
#pragma once

#include "CScaler.h"
#include "DecompressorTypes.h"

// Whether RewriteYuv takes `format`: 8-bit planar YUV with three planes.
bool CanRewriteYuv(AVPixelFormat format);

// Where RewriteYuv writes: planes of the source's format, and how much of the chroma planes
// (all of it for a picture of our own; for a caller's planes what the frame-buffer table
// gives them, which leaves out the last column and row of odd sizes).
struct YuvTarget {
  TargetView planes;
  int chromaWidth;
  int chromaRows;
};

// Writes the `width` x `height` picture of `source` (`format`, samples in `colour`, a resolved
// colour) into `target`, at the same format and size, in BT.601 limited range.
void RewriteYuv(const PlaneView& source, AVPixelFormat format, int width, int height,
                const ColourSpace_t& colour, const YuvTarget& target);

// Whether ConvertYuvToRgb takes `source` into `target`: a format RewriteYuv takes, into
// RGB24, BGR24 or RGBA.
bool CanConvertYuvToRgb(AVPixelFormat source, AVPixelFormat target);

// Writes the `width` x `height` picture of `source` (`format`, samples in `colour`) as
// `target` into `rgb`: `height` rows `pitch` apart of exactly `width` pixels each, nothing
// else. Each pixel takes the chroma sample that covers it; RGBA's alpha is 255.
void ConvertYuvToRgb(const PlaneView& source, AVPixelFormat format, int width, int height,
                     const ColourSpace_t& colour, AVPixelFormat target, uint8_t* rgb, int pitch);
