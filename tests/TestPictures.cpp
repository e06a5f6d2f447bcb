// Block and noise pictures for the decoder tests.
#include "TestPictures.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <decompressor/PixelFormat.h>

namespace {

constexpr Rgb kPalette[kBlockColumns * kBlockRows] = {
    {200, 40, 40},  {40, 200, 40},  {40, 40, 200},   {200, 200, 40},
    {40, 200, 200}, {200, 40, 200}, {120, 120, 120}, {225, 225, 225},
    {30, 30, 30},   {180, 100, 60}, {60, 100, 180},  {100, 180, 60}};

// A few source pixels, more when several source pixels fold into one target pixel.
double Margin(const BlockView& view) {
  const double fold = std::max(1.0, static_cast<double>(view.width) / view.targetWidth);
  return 4.0 + 2.0 * fold;
}

Rgb ExpectedRgb(const Rgb& block, bool rgbSource) {
  return rgbSource ? block : ReferenceYuvToRgb(ReferenceRgbToYuv(block));
}

int Tolerance(bool rgbSource, bool rgbTarget) {
  if (rgbSource == rgbTarget) return kScaledFlatTolerance;
  return rgbTarget ? kYuvToRgbTolerance : kRgbToYuvTolerance;
}

SampleImage ExpectedBlocks(const BlockView& view, bool rgbSource, bool rgbTarget) {
  SampleImage expected(view.targetWidth, view.targetHeight,
                       rgbTarget ? SampleImage::Kind::kRgb : SampleImage::Kind::kYuv);
  const double scaleX = static_cast<double>(view.width) / view.targetWidth;
  const double scaleY = static_cast<double>(view.height) / view.targetHeight;
  for (int y = 0; y < view.targetHeight; ++y) {
    for (int x = 0; x < view.targetWidth; ++x) {
      const double sx = view.x + (x + 0.5) * scaleX;
      const double sy = view.y + (y + 0.5) * scaleY;
      const Rgb block = BlockColour(static_cast<int>(sx), static_cast<int>(sy), view.sourceWidth,
                                    view.sourceHeight);
      if (rgbTarget) {
        const Rgb colour = ExpectedRgb(block, rgbSource);
        expected.Set(x, y, colour.r, colour.g, colour.b);
      } else {
        const Yuv colour = ReferenceRgbToYuv(block);
        expected.Set(x, y, colour.y, colour.u, colour.v);
      }
      const bool inside = DistanceToBlockEdge(sx, view.sourceWidth, kBlockColumns) > Margin(view) &&
                          DistanceToBlockEdge(sy, view.sourceHeight, kBlockRows) > Margin(view);
      if (!inside) expected.Ignore(x, y);
    }
  }
  return expected;
}

}  // namespace

::testing::AssertionResult BlocksShown(const TestFrame& target, const BlockView& view,
                                       bool rgbSource, const std::string& name) {
  const SampleImage expected = ExpectedBlocks(view, rgbSource, target.IsRgb());
  if (expected.CheckedCount() < view.targetWidth * view.targetHeight / 8) {
    return ::testing::AssertionFailure() << "too few pixels far enough from block edges";
  }
  return SamplesNear(target.ToImage(), expected, Tolerance(rgbSource, target.IsRgb()), name);
}

Rgb BlockColour(int x, int y, int width, int height) {
  const int column = std::clamp(x * kBlockColumns / width, 0, kBlockColumns - 1);
  const int row = std::clamp(y * kBlockRows / height, 0, kBlockRows - 1);
  return kPalette[row * kBlockColumns + column];
}

double DistanceToBlockEdge(double position, int size, int blocks) {
  double nearest = size;
  for (int edge = 1; edge < blocks; ++edge) {
    nearest = std::min(nearest, std::abs(position - static_cast<double>(size) * edge / blocks));
  }
  return nearest;
}

int Noise(int x, int y, int seed) {
  uint32_t value = static_cast<uint32_t>(x) * 73856093u ^ static_cast<uint32_t>(y) * 19349663u ^
                   static_cast<uint32_t>(seed) * 83492791u;
  value ^= value >> 13;
  value *= 0x5bd1e995u;
  value ^= value >> 15;
  return static_cast<int>(value & 0xFF);
}

Yuv NoiseYuv(int x, int y) {
  return Yuv{16 + Noise(x, y, 1) * 219 / 255, 16 + Noise(x, y, 2) * 224 / 255,
             16 + Noise(x, y, 3) * 224 / 255};
}

Rgb NoiseRgb(int x, int y) { return Rgb{Noise(x, y, 4), Noise(x, y, 5), Noise(x, y, 6)}; }

TestFrame NoiseFrame(int format, int width, int height, int padding) {
  TestFrame frame(format, width, height, padding);
  if (frame.IsRgb()) {
    frame.Paint(NoiseRgb);
  } else {
    frame.PaintYuv(NoiseYuv);
  }
  return frame;
}

int PutTestFrame(CDecompressor& decoder, TestFrame& frame, long long pts) {
  return decoder.PutFrame(frame.Planes(), frame.Pitches(), frame.Format(), frame.Width(),
                          frame.Height(), pts);
}

TestFrame CameraFrame(const CSyntheticCamera& camera) {
  TestFrame frame(camera.GetFormat(), camera.GetWidth(), camera.GetHeight());
  const unsigned char* const* planes = camera.GetPlanes();
  const int* pitches = camera.GetPitches();
  const int chromaWidth = camera.GetWidth() / 2;
  const int chromaHeight = camera.GetHeight() / 2;
  frame.PaintYuv([=](int x, int y) {
    const int luma = planes[0][y * pitches[0] + x];
    if (x / 2 >= chromaWidth || y / 2 >= chromaHeight) return Yuv{luma, 128, 128};
    return Yuv{luma, planes[1][y / 2 * pitches[1] + x / 2], planes[2][y / 2 * pitches[2] + x / 2]};
  });
  return frame;
}

bool EncodeCameraFrames(CSyntheticCamera& camera, TestEncoder& encoder, int count) {
  for (int index = 0; index < count; ++index) {
    camera.Render(index);
    if (!encoder.Encode(camera.GetPlanes(), camera.GetPitches(), index)) return false;
  }
  return encoder.Finish();
}

EncodedStream EncodeCamera(const char* encoder, int width, int height, int rate, int frames,
                           bool globalHeader) {
  return EncodeCamera(encoder, width, height, rate, frames, EncoderSettings{globalHeader});
}

EncodedStream EncodeCamera(const char* encoder, int width, int height, int rate, int frames,
                           const EncoderSettings& settings) {
  CSyntheticCamera camera(width, height, rate);
  TestEncoder stream(encoder, width, height, rate, settings);
  EXPECT_TRUE(stream.IsOpen()) << encoder;
  EXPECT_TRUE(EncodeCameraFrames(camera, stream, frames));
  return EncodedStream{stream.StreamInfo(), stream.Packets()};
}

EncodedStream EncodeInOrderCamera(int frames, const char* encoder, int pictureHash, int width,
                                  int height) {
  EncoderSettings settings;
  settings.bFrames = false;
  settings.pictureHash = pictureHash;
  return EncodeCamera(encoder, width, height, kStreamRate, frames, settings);
}

::testing::AssertionResult CloseToCamera(CDecompressor& decoder, long long index, int rate,
                                         const std::string& name) {
  CSyntheticCamera camera(decoder.GetWidth(), decoder.GetHeight(), rate);
  camera.Render(index);
  TestFrame decoded(PIXEL_FORMAT_I420, decoder.GetWidth(), decoder.GetHeight());
  if (GetWholeImage(decoder, decoded) != DECOMP_OK) {
    return ::testing::AssertionFailure() << "GetImage failed";
  }
  return MeanErrorBelow(decoded.ToImage(), CameraFrame(camera).ToImage(), kCodecMeanError,
                        name + "-" + std::to_string(index));
}

const TestFrame& DecoderFixture::Load(int format, int width, int height, long long pts) {
  m_frames.push_back(std::make_unique<TestFrame>(NoiseFrame(format, width, height)));
  EXPECT_EQ(DECOMP_OK, PutTestFrame(decoder, *m_frames.back(), pts));
  return *m_frames.back();
}

int GetWholeImage(CDecompressor& decoder, TestFrame& target) {
  return decoder.GetImage(target.Planes(), target.Pitches(), target.Format(), target.Width(),
                          target.Height(), 0, 0, decoder.GetWidth(), decoder.GetHeight(), nullptr);
}
