// Colour bars for the colour suites: the block picture of TestPictures with its YUV samples in
// a chosen matrix and range, encoded into a tagged stream and decoded again. Shared by the
// decoder's colour suite and the screen suite that shows decoded bars through the GL back-end.
// The samples come from the reference conversions (ColourReference), never from the decoder.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/PixelFormat.h>

#include "TestPictures.h"

// A stream of bars: its encoder ("libx264", "libx265", "mjpeg"), size and colour tags.
struct BarStream {
  const char* encoder;
  int width;
  int height;
  AVColorSpace matrixTag;
  AVColorRange rangeTag;
};

// "libx264_720p_bt709_tv": encoder, height and tags, for test names.
std::string BarStreamName(const BarStream& stream);

// What the tags say of the samples or, where they say nothing, the conventions: HD sizes (1280
// wide or 720 high and up) BT.709, smaller ones BT.601, limited range; MJPEG BT.601 at every
// size.
ColourSpace_t TaggedColour(const BarStream& stream);

LumaWeights WeightsOf(ColourMatrix matrix);

// Bars as YUV samples in `colour`, chroma from each chroma block's top-left pixel.
TestFrame BarsIn(const ColourSpace_t& colour, int width, int height,
                 int format = PIXEL_FORMAT_I420);

// `pictures` pictures of bars with samples in `samples`, encoded as `stream` says: losslessly
// where the codec can (MJPEG at its finest quantiser), tagged with its tags. Empty when the
// encoder is missing.
EncodedStream EncodeBars(const BarStream& stream, const ColourSpace_t& samples, int pictures);

// Opens `decoder` on `stream` and decodes it to its end; `pictures` pictures must come out.
::testing::AssertionResult DecodeAll(CDecompressor& decoder, const EncodedStream& stream,
                                     int pictures);
