// Raw frames handed to the decoder: every format and odd sizes round trip exactly, the
// chroma an odd size leaves out is taken from the nearest sample, bad frames are refused and
// the latest picture, its size and timestamp follow what was handed in.
#include <algorithm>
#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/PixelFormat.h>

#include "TestPictures.h"

namespace {

constexpr int kAllFormats[] = {PIXEL_FORMAT_I420,  PIXEL_FORMAT_YUYV,    PIXEL_FORMAT_RGB24,
                               PIXEL_FORMAT_BGR24, PIXEL_FORMAT_YUV422P, PIXEL_FORMAT_RGBA32,
                               PIXEL_FORMAT_UYVY,  PIXEL_FORMAT_NV12,    PIXEL_FORMAT_YV12};

struct Size {
  int width;
  int height;
};

constexpr Size kSizes[] = {{64, 48}, {33, 25}, {34, 25}, {33, 24}, {3, 3}, {2, 1}, {1, 1}};

class RawFrameRoundTrip : public ::testing::TestWithParam<int> {};

}  // namespace

TEST_P(RawFrameRoundTrip, SameFormatAndSizeComesBackByteForByte) {
  const int format = GetParam();
  for (const Size& size : kSizes) {
    SCOPED_TRACE(::testing::Message() << size.width << "x" << size.height);
    TestFrame source = NoiseFrame(format, size.width, size.height, 5);
    CDecompressor decoder;
    ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));
    TestFrame target(format, size.width, size.height, 3);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
    EXPECT_TRUE(target.SamePictureBytes(source, "round-trip-" + std::to_string(format) + "-" +
                                                    std::to_string(size.width) + "x" +
                                                    std::to_string(size.height)));
    EXPECT_TRUE(target.GuardsIntact());
  }
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, RawFrameRoundTrip, ::testing::ValuesIn(kAllFormats),
                         [](const ::testing::TestParamInfo<int>& info) {
                           return "Format" + std::to_string(info.param);
                         });

TEST(RawFrame, OddSizedPicturesKeepTheirColoursUpToTheLastColumnAndRow) {
  constexpr int kWidth = 97;
  constexpr int kHeight = 73;
  const BlockView whole{kWidth, kHeight, 0, 0, kWidth, kHeight, kWidth, kHeight};
  for (int format : {PIXEL_FORMAT_I420, PIXEL_FORMAT_NV12, PIXEL_FORMAT_YUV422P, PIXEL_FORMAT_YUYV,
                     PIXEL_FORMAT_YV12}) {
    TestFrame source(format, kWidth, kHeight);
    source.Paint([](int x, int y) { return BlockColour(x, y, kWidth, kHeight); });
    CDecompressor decoder;
    ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));
    for (int targetFormat : {PIXEL_FORMAT_RGB24, PIXEL_FORMAT_I420, PIXEL_FORMAT_UYVY}) {
      SCOPED_TRACE(::testing::Message() << "from " << format << " to " << targetFormat);
      TestFrame target(targetFormat, kWidth, kHeight);
      ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
      EXPECT_TRUE(BlocksShown(
          target, whole, false,
          "odd-edges-" + std::to_string(format) + "-to-" + std::to_string(targetFormat)));
      EXPECT_TRUE(target.GuardsIntact());
    }
  }
}

TEST(RawFrame, PictureWithoutChromaShowsNeutralGrey) {
  TestFrame source(PIXEL_FORMAT_I420, 1, 1);
  source.Planes()[0][0] = 126;
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));
  TestFrame target(PIXEL_FORMAT_RGB24, 1, 1);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
  SampleImage expected(1, 1, SampleImage::Kind::kRgb);
  const Rgb grey = ReferenceYuvToRgb(Yuv{126, 128, 128});
  expected.Set(0, 0, grey.r, grey.g, grey.b);
  EXPECT_TRUE(SamplesNear(target.ToImage(), expected, kYuvToRgbTolerance, "no-chroma"));
}

TEST(RawFrame, PlanesWithoutRowsAreSkippedWhateverTheirPitch) {
  TestFrame source(PIXEL_FORMAT_I420, 5, 1);
  source.PaintYuv(NoiseYuv);
  int pitches[3] = {5, 0, 0};
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.PutFrame(source.Planes(), pitches, PIXEL_FORMAT_I420, 5, 1, 0));
  TestFrame target(PIXEL_FORMAT_I420, 5, 1);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
  EXPECT_TRUE(target.SamePictureBytes(source, "rowless-chroma"));
}

TEST(RawFrame, HalfPairOfOddPackedRowsKeepsItsU) {
  TestFrame source(PIXEL_FORMAT_YUYV, 3, 1);
  const unsigned char row[6] = {50, 60, 70, 80, 90, 100};  // Y0 U Y1 V | Y2 U'
  std::copy(row, row + 6, source.Planes()[0]);
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));
  TestFrame planar(PIXEL_FORMAT_YUV422P, 3, 1);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, planar));
  EXPECT_EQ(90, planar.Planes()[0][2]);
  EXPECT_EQ(60, planar.Planes()[1][0]);
  EXPECT_EQ(80, planar.Planes()[2][0]);
  TestFrame packed(PIXEL_FORMAT_UYVY, 3, 1);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, packed));
  const unsigned char expected[6] = {60, 50, 80, 70, 100, 90};  // U Y0 V Y1 | U' Y2
  for (int i = 0; i < 6; ++i) EXPECT_EQ(expected[i], packed.Planes()[0][i]) << i;
}

TEST(RawFrame, BadFramesAreRefusedAndThePictureStays) {
  CDecompressor decoder;
  TestFrame first = NoiseFrame(PIXEL_FORMAT_I420, 32, 24);
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, first, 7));
  TestFrame other = NoiseFrame(PIXEL_FORMAT_RGB24, 16, 16);
  unsigned char* planes[3] = {other.Planes()[0], nullptr, nullptr};
  int pitches[3] = {48, 0, 0};
  int shortPitch[3] = {47, 0, 0};
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT, decoder.PutFrame(planes, pitches, 5, 16, 16, 8));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT, decoder.PutFrame(planes, pitches, PIXEL_FORMAT_RGB24, 0, 16, 8));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.PutFrame(planes, pitches, PIXEL_FORMAT_RGB24, 16, -1, 8));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.PutFrame(nullptr, pitches, PIXEL_FORMAT_RGB24, 16, 16, 8));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.PutFrame(planes, nullptr, PIXEL_FORMAT_RGB24, 16, 16, 8));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.PutFrame(planes, shortPitch, PIXEL_FORMAT_RGB24, 16, 16, 8));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT, decoder.PutFrame(planes, pitches, PIXEL_FORMAT_I420, 16, 16, 8));

  EXPECT_EQ(1, decoder.GetFrameCount());
  EXPECT_EQ(7, decoder.GetPts());
  EXPECT_EQ(32, decoder.GetWidth());
  TestFrame target(PIXEL_FORMAT_I420, 32, 24);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
  EXPECT_TRUE(target.SamePictureBytes(first, "bad-frame-kept"));
}

TEST(RawFrame, TheLatestPictureItsSizeAndTimestampFollowTheFrames) {
  CDecompressor decoder;
  EXPECT_FALSE(decoder.HasFrame());
  EXPECT_EQ(0, decoder.GetWidth());
  EXPECT_EQ(0, decoder.GetHeight());
  TestFrame large = NoiseFrame(PIXEL_FORMAT_I420, 64, 48);
  TestFrame small = NoiseFrame(PIXEL_FORMAT_NV12, 32, 16);
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, large, 10));
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, small, 20));
  EXPECT_TRUE(decoder.HasFrame());
  EXPECT_EQ(32, decoder.GetWidth());
  EXPECT_EQ(16, decoder.GetHeight());
  EXPECT_EQ(20, decoder.GetPts());
  EXPECT_EQ(2, decoder.GetFrameCount());

  // The next GetImage works on the new size: the old rectangle no longer fits.
  TestFrame target(PIXEL_FORMAT_NV12, 32, 16);
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.GetImage(target.Planes(), target.Pitches(), PIXEL_FORMAT_NV12, 32, 16, 0, 0, 64,
                             48, nullptr));
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
  EXPECT_TRUE(target.SamePictureBytes(small, "size-change"));
}

TEST(RawFrame, FramesAreCopiedNotBorrowed) {
  CDecompressor decoder;
  TestFrame source = NoiseFrame(PIXEL_FORMAT_RGB24, 16, 8);
  TestFrame original = NoiseFrame(PIXEL_FORMAT_RGB24, 16, 8);
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));
  source.Paint([](int, int) { return Rgb{0, 0, 0}; });
  TestFrame target(PIXEL_FORMAT_RGB24, 16, 8);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
  EXPECT_TRUE(target.SamePictureBytes(original, "copied"));
}
