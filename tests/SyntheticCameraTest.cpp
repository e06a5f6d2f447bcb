// The synthetic camera: its I420 layout, the colour bars against the BT.601 reference, the
// box sweeping to and fro, the running clock, reproducible pictures, and feeding a decoder.
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CSyntheticCamera.h>
#include <decompressor/PixelFormat.h>

#include "TestPictures.h"

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kRate = 25;
constexpr unsigned char kBlackLuma = 16;
constexpr unsigned char kWhiteLuma = 235;

// The camera rounds the same BT.601 formula as the reference; one step for the rounding of
// chroma averaged over a bar edge is all that may differ.
constexpr int kBarTolerance = 1;

int Luma(const CSyntheticCamera& camera, int x, int y) {
  return camera.GetPlanes()[0][y * camera.GetPitches()[0] + x];
}

// Pixels of luma white inside the clock.
int LitClockPixels(const CSyntheticCamera& camera) {
  const PtzRect clock = camera.GetClockRect();
  int lit = 0;
  for (int y = clock.y; y < clock.y + clock.height; ++y) {
    for (int x = clock.x; x < clock.x + clock.width; ++x) {
      lit += Luma(camera, x, y) == kWhiteLuma ? 1 : 0;
    }
  }
  return lit;
}

}  // namespace

TEST(SyntheticCamera, DrawsI420OfTheChosenSizeAndRate) {
  const CSyntheticCamera camera(kWidth, kHeight, kRate);
  EXPECT_EQ(kWidth, camera.GetWidth());
  EXPECT_EQ(kHeight, camera.GetHeight());
  EXPECT_EQ(kRate, camera.GetFrameRate());
  EXPECT_EQ(PIXEL_FORMAT_I420, camera.GetFormat());
  EXPECT_EQ(kWidth, camera.GetPitches()[0]);
  EXPECT_EQ(kWidth / 2, camera.GetPitches()[1]);
  EXPECT_EQ(kWidth / 2, camera.GetPitches()[2]);
  EXPECT_EQ(-1, camera.GetFrameIndex());
}

TEST(SyntheticCamera, ClampsSizesAndRate) {
  const CSyntheticCamera tiny(0, -5, 0);
  EXPECT_EQ(1, tiny.GetWidth());
  EXPECT_EQ(1, tiny.GetHeight());
  EXPECT_EQ(1, tiny.GetFrameRate());
  const CSyntheticCamera huge(100000, 2, 30);
  EXPECT_EQ(CPixelLayout::kMaxDimension, huge.GetWidth());
}

TEST(SyntheticCamera, BarsShowTheSeventyFivePercentColours) {
  CSyntheticCamera camera(kWidth, kHeight, kRate);
  camera.Render(0);
  const Rgb bars[7] = {{191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0},
                       {191, 0, 191},   {191, 0, 0},   {0, 0, 191}};
  const TestFrame picture = CameraFrame(camera);
  SampleImage actual(7, 1, SampleImage::Kind::kYuv);
  SampleImage expected(7, 1, SampleImage::Kind::kYuv);
  for (int bar = 0; bar < 7; ++bar) {
    const Yuv shown = picture.YuvAt(kWidth * (2 * bar + 1) / 14, kHeight / 3);
    const Yuv reference = ReferenceRgbToYuv(bars[bar]);
    actual.Set(bar, 0, shown.y, shown.u, shown.v);
    expected.Set(bar, 0, reference.y, reference.u, reference.v);
  }
  EXPECT_TRUE(SamplesNear(actual, expected, kBarTolerance, "camera-bars"));
}

TEST(SyntheticCamera, BoxSweepsAcrossOncePerSecondAndBack) {
  CSyntheticCamera camera(kWidth, kHeight, kRate);
  EXPECT_EQ(0, camera.GetBoxRect(0).x);
  int previous = -1;
  for (int index = 0; index <= kRate; ++index) {
    const int x = camera.GetBoxRect(index).x;
    EXPECT_GT(x, previous) << "picture " << index;
    previous = x;
  }
  const PtzRect turn = camera.GetBoxRect(kRate);
  EXPECT_EQ(kWidth, turn.x + turn.width);
  EXPECT_LT(camera.GetBoxRect(kRate + 1).x, turn.x);
  EXPECT_EQ(0, camera.GetBoxRect(2 * kRate).x);

  camera.Render(7);
  const PtzRect box = camera.GetBoxRect(7);
  EXPECT_EQ(kWhiteLuma, Luma(camera, box.x + box.width / 2, box.y + box.height / 2));
  EXPECT_EQ(kBlackLuma, Luma(camera, box.x - 1, box.y + box.height / 2));
  EXPECT_EQ(kBlackLuma, Luma(camera, box.x + box.width, box.y + box.height / 2));
}

TEST(SyntheticCamera, ClockTextRunsWithThePictures) {
  EXPECT_EQ("00:00:00:00", CSyntheticCamera::FormatClock(0, 25));
  EXPECT_EQ("00:00:01:01", CSyntheticCamera::FormatClock(26, 25));
  EXPECT_EQ("01:01:01:07", CSyntheticCamera::FormatClock(25 * 3661 + 7, 25));
  EXPECT_EQ("00:00:02:00", CSyntheticCamera::FormatClock(60, 30));
}

TEST(SyntheticCamera, ClockDigitsLightTheirSegments) {
  CSyntheticCamera camera(kWidth, kHeight, kRate);
  int lit[10];
  for (int digit = 0; digit < 10; ++digit) {
    camera.Render(digit);  // the last digit of the clock shows the picture index
    lit[digit] = LitClockPixels(camera);
  }
  for (int digit = 0; digit < 10; ++digit) {
    if (digit != 8) {
      EXPECT_GT(lit[8], lit[digit]) << "8 lights every segment";
    }
    if (digit != 1) {
      EXPECT_LT(lit[1], lit[digit]) << "1 lights the fewest";
    }
  }
  const PtzRect clock = camera.GetClockRect();
  EXPECT_GT(clock.width, 0);
  EXPECT_GE(clock.y, kHeight * 2 / 3);
  EXPECT_LE(clock.y + clock.height, kHeight);
}

TEST(SyntheticCamera, PicturesAreReproducibleFromTheirIndex) {
  CSyntheticCamera camera(kWidth, kHeight, kRate);
  EXPECT_EQ(0, camera.NextFrame());
  EXPECT_EQ(1, camera.NextFrame());
  camera.Render(17);
  const TestFrame first = CameraFrame(camera);
  camera.Render(3);
  const TestFrame other = CameraFrame(camera);
  camera.Render(17);
  EXPECT_EQ(17, camera.GetFrameIndex());
  EXPECT_TRUE(CameraFrame(camera).SamePictureBytes(first, "camera-reproducible"));
  EXPECT_FALSE(other.SamePictureBytes(first, "camera-differs"));
}

TEST(SyntheticCamera, FeedsADecoder) {
  CSyntheticCamera camera(kWidth, kHeight, kRate);
  const long long index = camera.NextFrame();
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.PutFrame(camera.GetPlanes(), camera.GetPitches(), camera.GetFormat(),
                                        camera.GetWidth(), camera.GetHeight(), index));
  TestFrame target(PIXEL_FORMAT_I420, kWidth, kHeight);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
  EXPECT_TRUE(target.SamePictureBytes(CameraFrame(camera), "camera-decoded"));
}

TEST(SyntheticCamera, OddAndTinySizesDrawInsideTheirPicture) {
  for (const auto& size : {std::pair{33, 25}, std::pair{1, 1}, std::pair{7, 3}}) {
    CSyntheticCamera camera(size.first, size.second, kRate);
    for (int index = 0; index < 3; ++index) camera.NextFrame();
    const TestFrame picture = CameraFrame(camera);
    EXPECT_EQ(size.first, picture.Width());
  }
  CSyntheticCamera odd(33, 25, kRate);
  odd.Render(0);
  const Yuv white = ReferenceRgbToYuv(Rgb{191, 191, 191});
  EXPECT_NEAR(white.y, Luma(odd, 1, 1), kBarTolerance);
}
