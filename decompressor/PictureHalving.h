// Halving 8-bit planar YUV pictures in both directions, each sample the rounded mean of the
// 2 x 2 samples it covers. Internal (not installed); used by CFrameConverter before libswscale
// scales a picture down to half its size or less.
//
// libswscale's filters grow with the scaling ratio and run over every source row, so a
// 1280x720 picture scaled to a 480x270 tile costs it several times what the same scaling from
// a picture of half the size costs; a box halving first, written for the compiler to
// vectorise, keeps the filter's smoothing (it averages every source sample) at a fraction of
// the cost. It takes only formats whose three planes hold one 8-bit sample per byte (those
// CanRewriteYuv takes); it does not scale by other factors.
#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include "CScaler.h"

// Writes the `width` x `height` picture of `source` (`format`) at half its size, rounded
// down, into `target`, which gets a buffer of that size. The last sample of an odd row or
// column count is averaged with itself. False when no buffer could be had.
bool HalvePicture(const PlaneView& source, AVPixelFormat format, int width, int height,
                  AVFrame& target);
