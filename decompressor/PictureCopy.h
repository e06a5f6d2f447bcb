// Copying pictures between frame buffers and FFmpeg pictures. Internal (not installed); used
// by CPictureStore for raw frames and by CFrameConverter for its staging picture.
//
// A raw frame is stored in RawStorageFormat: the code's own FFmpeg format, except that packed
// 4:2:2 (YUYV, UYVY) is unpacked into planar 4:2:2 without loss, so that every stored picture
// can be cropped at any column. FFmpeg rounds chroma sizes up where the frame-buffer table
// rounds them down; the chroma the table does not carry (the last column or row of an
// odd-sized picture, or V of a trailing half pair) repeats its nearest neighbour, and is
// neutral grey where there is no neighbour at all (a picture 1 pixel wide or high).
#pragma once

#include <cstdint>

extern "C" {
#include <libavutil/frame.h>
}

class CPixelLayout;

// FFmpeg's format of the picture that stores a raw frame of `format`.
AVPixelFormat RawStorageFormat(int format);

// Gives `frame` a buffer of the format and size unless it already has one.
bool EnsurePictureBuffer(AVFrame& frame, AVPixelFormat format, int width, int height);

// Copies the caller's planes, laid out as `layout` says, into `target`, which has the format
// RawStorageFormat(layout.GetFormat()) and the layout's size.
void ImportRawFrame(const unsigned char* const* planes, const int* pitches,
                    const CPixelLayout& layout, AVFrame& target);

// Copies `rows` rows of `rowBytes` bytes. A plane without picture bytes (no rows, or rows of
// no bytes: the chroma of a picture 1 pixel wide or high) is skipped whatever its pointer and
// pitch, as the argument checks skip it; FFmpeg's copy would assert on its pitch.
void CopyPlaneRows(uint8_t* target, int targetPitch, const uint8_t* source, int sourcePitch,
                   int rowBytes, int rows);

// Copies the top-left `rowBytes[p]` x `rows[p]` block of each plane p of `data` into
// `target`, then fills the rest of each of the target's planes by repeating the last sample
// of every row and then the last row.
void CopyExtended(const uint8_t* const* data, const int* linesizes, const int* rowBytes,
                  const int* rows, AVFrame& target);
