// GetImage into every pixel format, from raw frames of every pixel format: colours against the
// BT.601 reference, placement under crop and scaling, and nothing written outside the planes.
#include <string>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/PixelFormat.h>

#include "TestPictures.h"

namespace {

constexpr int kAllFormats[] = {PIXEL_FORMAT_I420,  PIXEL_FORMAT_YUYV,    PIXEL_FORMAT_RGB24,
                               PIXEL_FORMAT_BGR24, PIXEL_FORMAT_YUV422P, PIXEL_FORMAT_RGBA32,
                               PIXEL_FORMAT_UYVY,  PIXEL_FORMAT_NV12,    PIXEL_FORMAT_YV12};

// Blocks of 32 x 32 pixels.
constexpr int kSourceWidth = 128;
constexpr int kSourceHeight = 96;

struct Geometry {
  const char* name;
  BlockView view;
};

constexpr Geometry kGeometries[] = {
    {"same-size", {kSourceWidth, kSourceHeight, 0, 0, 128, 96, 128, 96}},
    {"upscale", {kSourceWidth, kSourceHeight, 0, 0, 128, 96, 320, 240}},
    {"downscale", {kSourceWidth, kSourceHeight, 0, 0, 128, 96, 48, 36}},
    {"crop-and-upscale", {kSourceWidth, kSourceHeight, 32, 32, 64, 32, 100, 50}},
    {"crop-and-downscale", {kSourceWidth, kSourceHeight, 32, 0, 96, 96, 40, 40}},
    {"odd-target", {kSourceWidth, kSourceHeight, 0, 0, 128, 96, 67, 49}},
    {"odd-crop", {kSourceWidth, kSourceHeight, 9, 7, 101, 75, 101, 75}},
};

class GetImageFormats : public ::testing::TestWithParam<std::tuple<int, int>> {};

class GetImageExact : public DecoderFixture {
 protected:
  // GetImage of the rectangle of `target`'s size at (x, y), unscaled.
  int GetUnscaled(TestFrame& target, int x, int y) {
    return decoder.GetImage(target.Planes(), target.Pitches(), target.Format(), target.Width(),
                            target.Height(), x, y, target.Width(), target.Height(), nullptr);
  }
};

}  // namespace

TEST_P(GetImageFormats, BlocksKeepTheirColourAndPlaceUnderCropAndScale) {
  const auto [sourceFormat, targetFormat] = GetParam();
  TestFrame source(sourceFormat, kSourceWidth, kSourceHeight);
  source.Paint([](int x, int y) { return BlockColour(x, y, kSourceWidth, kSourceHeight); });
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));

  for (const Geometry& geometry : kGeometries) {
    SCOPED_TRACE(geometry.name);
    const BlockView& view = geometry.view;
    TestFrame target(targetFormat, view.targetWidth, view.targetHeight, 7);
    ASSERT_EQ(DECOMP_OK, decoder.GetImage(target.Planes(), target.Pitches(), targetFormat,
                                          view.targetWidth, view.targetHeight, view.x, view.y,
                                          view.width, view.height, nullptr));
    EXPECT_TRUE(target.GuardsIntact());
    const std::string name = "blocks-" + std::to_string(sourceFormat) + "-to-" +
                             std::to_string(targetFormat) + "-" + geometry.name;
    EXPECT_TRUE(BlocksShown(target, view, source.IsRgb(), name));
  }
}

INSTANTIATE_TEST_SUITE_P(AllPairs, GetImageFormats,
                         ::testing::Combine(::testing::ValuesIn(kAllFormats),
                                            ::testing::ValuesIn(kAllFormats)),
                         [](const ::testing::TestParamInfo<std::tuple<int, int>>& info) {
                           return "From" + std::to_string(std::get<0>(info.param)) + "To" +
                                  std::to_string(std::get<1>(info.param));
                         });

TEST_F(GetImageExact, I420CopiesSampleForSampleIntoThe420Formats) {
  const TestFrame& picture = Load(PIXEL_FORMAT_I420, 64, 48);
  for (int format : {PIXEL_FORMAT_I420, PIXEL_FORMAT_YV12, PIXEL_FORMAT_NV12}) {
    TestFrame target(format, 64, 48, 5);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
    TestFrame expected(format, 64, 48);
    expected.PaintYuv([&picture](int x, int y) { return picture.YuvAt(x, y); });
    EXPECT_TRUE(target.SamePictureBytes(expected, "exact-420-" + std::to_string(format)));
    EXPECT_TRUE(target.GuardsIntact());
  }
}

// A view at half the picture's size or less is halved first; at exactly half nothing else
// happens: each sample is the rounded mean of the 2 x 2 samples it covers (an odd size's last
// column and row are left over).
TEST_F(GetImageExact, HalfSizeTakesTheMeanOfEach2x2Block) {
  for (const auto& [width, height] : {std::pair{64, 48}, std::pair{23, 15}}) {
    const TestFrame& picture = Load(PIXEL_FORMAT_I420, width, height);
    TestFrame target(PIXEL_FORMAT_I420, width / 2, height / 2, 5);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
    const auto mean = [](int a, int b, int c, int d) { return (a + b + c + d + 2) >> 2; };
    TestFrame expected(PIXEL_FORMAT_I420, width / 2, height / 2);
    expected.PaintYuv([&](int x, int y) {
      const auto at = [&](int dx, int dy) { return picture.YuvAt(2 * x + dx, 2 * y + dy); };
      // Chroma sample (i, j) covers pixel (2i, 2j); its block's samples cover pixels two apart.
      const auto chroma = [&](int dx, int dy) {
        return picture.YuvAt(4 * (x / 2) + 2 * dx, 4 * (y / 2) + 2 * dy);
      };
      return Yuv{mean(at(0, 0).y, at(1, 0).y, at(0, 1).y, at(1, 1).y),
                 mean(chroma(0, 0).u, chroma(1, 0).u, chroma(0, 1).u, chroma(1, 1).u),
                 mean(chroma(0, 0).v, chroma(1, 0).v, chroma(0, 1).v, chroma(1, 1).v)};
    });
    EXPECT_TRUE(target.SamePictureBytes(expected, "half-" + std::to_string(width)));
    EXPECT_TRUE(target.GuardsIntact());
  }
}

TEST_F(GetImageExact, I420ToRgbMatchesTheReferencePixelForPixel) {
  const TestFrame& picture = Load(PIXEL_FORMAT_I420, 64, 48);
  for (int format : {PIXEL_FORMAT_RGB24, PIXEL_FORMAT_BGR24, PIXEL_FORMAT_RGBA32}) {
    TestFrame target(format, 64, 48);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
    SampleImage expected(64, 48, SampleImage::Kind::kRgb);
    for (int y = 0; y < 48; ++y) {
      for (int x = 0; x < 64; ++x) {
        const Rgb rgb = ReferenceYuvToRgb(picture.YuvAt(x, y));
        expected.Set(x, y, rgb.r, rgb.g, rgb.b);
      }
    }
    EXPECT_TRUE(SamplesNear(target.ToImage(), expected, kYuvToRgbTolerance,
                            "exact-rgb-" + std::to_string(format)));
  }
}

TEST_F(GetImageExact, RgbaFromYuvIsOpaque) {
  Load(PIXEL_FORMAT_I420, 16, 8);
  TestFrame target(PIXEL_FORMAT_RGBA32, 16, 8);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 16; ++x) ASSERT_EQ(255, target.AlphaAt(x, y)) << x << ", " << y;
  }
}

TEST_F(GetImageExact, RgbCopiesIntoEveryRgbLayout) {
  const TestFrame& picture = Load(PIXEL_FORMAT_RGB24, 40, 30);
  for (int format : {PIXEL_FORMAT_RGB24, PIXEL_FORMAT_BGR24, PIXEL_FORMAT_RGBA32}) {
    TestFrame target(format, 40, 30, 3);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
    EXPECT_TRUE(SamplesNear(target.ToImage(), picture.ToImage(), kExactSamples,
                            "exact-rgb-copy-" + std::to_string(format)));
    EXPECT_TRUE(target.GuardsIntact());
  }
}

TEST_F(GetImageExact, CropCopiesTheRectangleUnscaled) {
  const TestFrame& picture = Load(PIXEL_FORMAT_I420, 128, 96);
  TestFrame target(PIXEL_FORMAT_I420, 64, 40);
  ASSERT_EQ(DECOMP_OK, GetUnscaled(target, 8, 6));
  TestFrame expected(PIXEL_FORMAT_I420, 64, 40);
  expected.PaintYuv([&picture](int x, int y) { return picture.YuvAt(x + 8, y + 6); });
  EXPECT_TRUE(target.SamePictureBytes(expected, "exact-crop"));
}

TEST_F(GetImageExact, OddCropCornerIsExactInLumaAndTakesTheCoveringChroma) {
  const TestFrame& picture = Load(PIXEL_FORMAT_I420, 64, 48);
  TestFrame target(PIXEL_FORMAT_I420, 33, 21);
  ASSERT_EQ(DECOMP_OK, GetUnscaled(target, 7, 5));
  // Luma from (x + 7, y + 5); chroma sample (cx, cy) from source chroma (cx + 3, cy + 2).
  TestFrame expected(PIXEL_FORMAT_I420, 33, 21);
  expected.PaintYuv([&picture](int x, int y) {
    const Yuv chroma = picture.YuvAt(x / 2 * 2 + 6, y / 2 * 2 + 4);
    return Yuv{picture.YuvAt(x + 7, y + 5).y, chroma.u, chroma.v};
  });
  EXPECT_TRUE(target.SamePictureBytes(expected, "exact-odd-crop"));
}
