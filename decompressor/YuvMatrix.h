// Re-expressing 8-bit planar YUV samples of any matrix and range as the delivered BT.601
// limited range, at the same format and size. Internal (not installed).
//
// libswscale changes the matrix of YUV samples only through 16-bit RGB, which costs about ten
// times as much as this direct step: a 3 x 3 transform in fixed point, where each luma sample
// takes the chroma sample that covers it. It neither scales nor changes formats (CScaler does),
// and takes no packed, semi-planar or deeper formats (those go through libswscale).
#pragma once

#include "CScaler.h"
#include "DecompressorTypes.h"

// Whether RewriteYuv takes `format`: 8-bit planar YUV with three planes.
bool CanRewriteYuv(AVPixelFormat format);

// Writes the `width` x `height` picture of `source` (`format`, samples in `colour`, a resolved
// colour) into `target`, which has the same format and size, in BT.601 limited range.
void RewriteYuv(const PlaneView& source, AVPixelFormat format, int width, int height,
                const ColourSpace_t& colour, AVFrame& target);
