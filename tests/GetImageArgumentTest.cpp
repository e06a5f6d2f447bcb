// GetImage's refusals (nothing written), its writes kept inside the planes' rows, the digital
// PTZ crop, and the reuse of its conversion while the parameters stay.
#include <climits>
#include <string>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CDigitalPTZ.h>
#include <decompressor/CPixelLayout.h>
#include <decompressor/PixelFormat.h>

#include "TestPictures.h"

namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 48;

class GetImageArguments : public ::testing::Test {
 protected:
  void SetUp() override {
    source.PaintYuv(NoiseYuv);
    ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));
  }

  int Get(TestFrame& target, int x, int y, int width, int height, CDigitalPTZ* ptz = nullptr) {
    return decoder.GetImage(target.Planes(), target.Pitches(), target.Format(), target.Width(),
                            target.Height(), x, y, width, height, ptz);
  }

  // GetImage with the given arguments on a fresh I420 buffer: refused, nothing written.
  void ExpectRefused(int format, int width, int height, int x, int y, int srcWidth, int srcHeight) {
    TestFrame target(PIXEL_FORMAT_I420, kWidth, kHeight);
    EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
              decoder.GetImage(target.Planes(), target.Pitches(), format, width, height, x, y,
                               srcWidth, srcHeight, nullptr));
    EXPECT_TRUE(target.Untouched());
  }

  CDecompressor decoder;
  TestFrame source{PIXEL_FORMAT_I420, kWidth, kHeight};
};

// A PTZ whose in-use answer a test chooses, to tell IsActive() and `enabled` apart.
class ChosenPtz : public CDigitalPTZ {
 public:
  explicit ChosenPtz(bool active) : m_active(active) {}
  bool IsActive() override { return m_active; }

 private:
  bool m_active;
};

}  // namespace

TEST(GetImageWithoutPicture, ReportsNoFrameAndWritesNothing) {
  CDecompressor decoder;
  TestFrame target(PIXEL_FORMAT_I420, kWidth, kHeight);
  EXPECT_EQ(DECOMP_ERROR_NO_FRAME,
            decoder.GetImage(target.Planes(), target.Pitches(), PIXEL_FORMAT_I420, kWidth, kHeight,
                             0, 0, kWidth, kHeight, nullptr));
  EXPECT_TRUE(target.Untouched());
}

TEST_F(GetImageArguments, UnknownFormatsAreRefused) {
  for (int format : {-1, 5, 7, 20, 24}) {
    SCOPED_TRACE(format);
    ExpectRefused(format, kWidth, kHeight, 0, 0, kWidth, kHeight);
  }
}

TEST_F(GetImageArguments, SizesBelowOneOrBeyondTheLimitAreRefused) {
  ExpectRefused(PIXEL_FORMAT_I420, 0, kHeight, 0, 0, kWidth, kHeight);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, 0, 0, 0, kWidth, kHeight);
  ExpectRefused(PIXEL_FORMAT_I420, -64, kHeight, 0, 0, kWidth, kHeight);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, -1, 0, 0, kWidth, kHeight);
  ExpectRefused(PIXEL_FORMAT_I420, CPixelLayout::kMaxDimension + 1, kHeight, 0, 0, kWidth, kHeight);
}

TEST_F(GetImageArguments, EmptyRectanglesAreRefused) {
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, 0, 0, 0, kHeight);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, 0, 0, kWidth, 0);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, 10, 10, -5, 8);
}

TEST_F(GetImageArguments, RectanglesNotInsideThePictureAreRefused) {
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, -1, 0, 16, 16);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, 0, -1, 16, 16);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, 56, 0, 16, 16);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, 0, 40, 16, 16);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, 0, 0, kWidth + 1, kHeight);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, kWidth, kHeight, 1, 1);
  ExpectRefused(PIXEL_FORMAT_I420, kWidth, kHeight, 1, 1, INT_MAX, INT_MAX);
}

TEST_F(GetImageArguments, MissingPlanesAreRefused) {
  TestFrame target(PIXEL_FORMAT_I420, kWidth, kHeight);
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.GetImage(nullptr, target.Pitches(), PIXEL_FORMAT_I420, kWidth, kHeight, 0, 0,
                             kWidth, kHeight, nullptr));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.GetImage(target.Planes(), nullptr, PIXEL_FORMAT_I420, kWidth, kHeight, 0, 0,
                             kWidth, kHeight, nullptr));
  for (int plane = 0; plane < 3; ++plane) {
    unsigned char* planes[3] = {target.Planes()[0], target.Planes()[1], target.Planes()[2]};
    planes[plane] = nullptr;
    EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
              decoder.GetImage(planes, target.Pitches(), PIXEL_FORMAT_I420, kWidth, kHeight, 0, 0,
                               kWidth, kHeight, nullptr))
        << "plane " << plane;
  }
  EXPECT_TRUE(target.Untouched());

  TestFrame nv12(PIXEL_FORMAT_NV12, kWidth, kHeight);
  unsigned char* planes[3] = {nv12.Planes()[0], nullptr, nullptr};
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.GetImage(planes, nv12.Pitches(), PIXEL_FORMAT_NV12, kWidth, kHeight, 0, 0,
                             kWidth, kHeight, nullptr));
  EXPECT_TRUE(nv12.Untouched());
}

TEST_F(GetImageArguments, PitchesShorterThanARowAreRefused) {
  TestFrame target(PIXEL_FORMAT_I420, kWidth, kHeight);
  for (int plane = 0; plane < 3; ++plane) {
    int pitches[3] = {kWidth, kWidth / 2, kWidth / 2};
    pitches[plane] -= 1;
    EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
              decoder.GetImage(target.Planes(), pitches, PIXEL_FORMAT_I420, kWidth, kHeight, 0, 0,
                               kWidth, kHeight, nullptr))
        << "plane " << plane;
  }
  EXPECT_TRUE(target.Untouched());
}

TEST_F(GetImageArguments, PlanesAFormatDoesNotUseMayBeNull) {
  TestFrame rgb(PIXEL_FORMAT_RGB24, kWidth, kHeight);
  unsigned char* planes[3] = {rgb.Planes()[0], nullptr, nullptr};
  int pitches[3] = {kWidth * 3, 0, 0};
  EXPECT_EQ(DECOMP_OK, decoder.GetImage(planes, pitches, PIXEL_FORMAT_RGB24, kWidth, kHeight, 0, 0,
                                        kWidth, kHeight, nullptr));

  // A picture one pixel wide has no chroma at all in the table.
  TestFrame single(PIXEL_FORMAT_I420, 1, 1);
  unsigned char* lumaOnly[3] = {single.Planes()[0], nullptr, nullptr};
  int lumaPitch[3] = {1, 0, 0};
  EXPECT_EQ(DECOMP_OK, decoder.GetImage(lumaOnly, lumaPitch, PIXEL_FORMAT_I420, 1, 1, 0, 0, kWidth,
                                        kHeight, nullptr));
  EXPECT_TRUE(single.GuardsIntact());
}

// A picture one pixel high has no chroma rows in the table: those planes are skipped whatever
// their pitch, and the copy never reaches one.
TEST_F(GetImageArguments, PlanesWithoutRowsAreSkippedWhateverTheirPitch) {
  TestFrame target(PIXEL_FORMAT_I420, 5, 1);
  int pitches[3] = {5, 0, 0};
  EXPECT_EQ(DECOMP_OK, decoder.GetImage(target.Planes(), pitches, PIXEL_FORMAT_I420, 5, 1, 0, 0,
                                        kWidth, kHeight, nullptr));
  EXPECT_TRUE(target.GuardsIntact());
  EXPECT_FALSE(target.Untouched()) << "the luma row was not written";
}

TEST_F(GetImageArguments, WritesStayInsideThePlanesRows) {
  const int formats[] = {PIXEL_FORMAT_I420,  PIXEL_FORMAT_YUYV,    PIXEL_FORMAT_RGB24,
                         PIXEL_FORMAT_BGR24, PIXEL_FORMAT_YUV422P, PIXEL_FORMAT_RGBA32,
                         PIXEL_FORMAT_UYVY,  PIXEL_FORMAT_NV12,    PIXEL_FORMAT_YV12};
  const int sizes[][2] = {{64, 48}, {62, 46}, {33, 25}, {50, 30}, {130, 98}, {3, 1}, {1, 1}};
  for (int format : formats) {
    for (const auto& size : sizes) {
      for (int padding : {0, 9}) {
        SCOPED_TRACE(::testing::Message() << "format " << format << " " << size[0] << "x" << size[1]
                                          << " padding " << padding);
        TestFrame target(format, size[0], size[1], padding);
        ASSERT_EQ(DECOMP_OK, Get(target, 0, 0, kWidth, kHeight));
        EXPECT_TRUE(target.GuardsIntact());
      }
    }
  }
}

// Sizes whose rows are whole multiples of 32 bytes, on pitches of a multiple of 16 bytes, are
// written by libswscale (and by the decoder's own RGB and BT.601 steps) straight into the
// caller's planes; other pitches get a copy. Either way nothing outside the table's rows is
// written and the pictures are the same: scaled from the whole picture and unscaled from a
// crop of the target's size, from sources of three layouts (NV12 goes through libswscale's two
// steps into RGB). 72 x 40 into YUYV from YUV422P is a size whose rows (144 bytes) libswscale
// runs past the plane's end.
TEST(GetImageDirectWrites, StayInsideThePlanesRowsAndMatchTheCopies) {
  const int formats[] = {PIXEL_FORMAT_I420,  PIXEL_FORMAT_YUYV,    PIXEL_FORMAT_RGB24,
                         PIXEL_FORMAT_BGR24, PIXEL_FORMAT_YUV422P, PIXEL_FORMAT_RGBA32,
                         PIXEL_FORMAT_UYVY,  PIXEL_FORMAT_NV12,    PIXEL_FORMAT_YV12};
  const int sizes[][2] = {{128, 72}, {64, 36}, {192, 110}, {320, 180},
                          {160, 90}, {96, 54}, {48, 28},   {72, 40}};
  for (int sourceFormat : {PIXEL_FORMAT_I420, PIXEL_FORMAT_NV12, PIXEL_FORMAT_YUV422P}) {
    CDecompressor decoder;
    TestFrame source = NoiseFrame(sourceFormat, 400, 300);
    ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));
    for (int format : formats) {
      for (const auto& size : sizes) {
        for (bool scaled : {true, false}) {
          SCOPED_TRACE(::testing::Message() << "from " << sourceFormat << " to " << format << " "
                                            << size[0] << "x" << size[1] << " scaled " << scaled);
          const auto get = [&](TestFrame& target) {
            return decoder.GetImage(target.Planes(), target.Pitches(), format, size[0], size[1], 0,
                                    0, scaled ? 400 : size[0], scaled ? 300 : size[1], nullptr);
          };
          TestFrame copied(format, size[0], size[1], 9);
          ASSERT_EQ(DECOMP_OK, get(copied));
          for (int padding : {0, 16, 48}) {
            TestFrame direct(format, size[0], size[1], padding);
            ASSERT_EQ(DECOMP_OK, get(direct));
            EXPECT_TRUE(direct.GuardsIntact()) << "padding " << padding;
            EXPECT_TRUE(direct.SamePictureBytes(copied, "direct-" + std::to_string(format)));
          }
        }
      }
    }
  }
}

TEST(GetImageDirectWrites, ARewrittenPictureFillsOnlyTheTablesRows) {
  const int sizes[][2] = {{128, 72}, {101, 75}, {64, 33}, {33, 64}, {1, 1}, {3, 1}};
  for (int format : {PIXEL_FORMAT_I420, PIXEL_FORMAT_YV12, PIXEL_FORMAT_YUV422P}) {
    for (const auto& size : sizes) {
      for (int padding : {0, 7, 16}) {
        SCOPED_TRACE(::testing::Message() << "format " << format << " " << size[0] << "x" << size[1]
                                          << " padding " << padding);
        CDecompressor decoder;
        decoder.SetColourOverride(ColourSpace_t{ColourMatrix::kBt709, ColourRange::kFromStream});
        TestFrame source = NoiseFrame(format, size[0], size[1]);
        ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source));
        TestFrame target(format, size[0], size[1], padding);
        ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, target));
        EXPECT_TRUE(target.GuardsIntact());
      }
    }
  }
}

TEST_F(GetImageArguments, EngagedPtzCropsToItsZoomWindow) {
  CDigitalPTZ ptz;
  ptz.enabled = true;
  ptz.SetPanTiltZoom(0.5f, -0.5f, 2.0f);
  TestFrame zoomed(PIXEL_FORMAT_I420, kWidth, kHeight);
  ASSERT_EQ(DECOMP_OK, Get(zoomed, 0, 0, kWidth, kHeight, &ptz));

  const PtzRect window = ptz.GetZoomWindow(PtzRect{0, 0, kWidth, kHeight});
  EXPECT_EQ(kWidth / 2, window.width);
  TestFrame cropped(PIXEL_FORMAT_I420, kWidth, kHeight);
  ASSERT_EQ(DECOMP_OK, Get(cropped, window.x, window.y, window.width, window.height));
  EXPECT_TRUE(zoomed.SamePictureBytes(cropped, "ptz-zoom-window"));
}

TEST_F(GetImageArguments, PtzZoomWindowLiesInsideTheSourceRectangle) {
  CDigitalPTZ ptz;
  ptz.enabled = true;
  ptz.SetPanTiltZoom(1.0f, 1.0f, 4.0f);
  const PtzRect region{16, 8, 32, 24};
  TestFrame zoomed(PIXEL_FORMAT_I420, 16, 12);
  ASSERT_EQ(DECOMP_OK, Get(zoomed, region.x, region.y, region.width, region.height, &ptz));

  const PtzRect window = ptz.GetZoomWindow(region);
  EXPECT_EQ((PtzRect{40, 26, 8, 6}), window);
  TestFrame cropped(PIXEL_FORMAT_I420, 16, 12);
  ASSERT_EQ(DECOMP_OK, Get(cropped, window.x, window.y, window.width, window.height));
  EXPECT_TRUE(zoomed.SamePictureBytes(cropped, "ptz-inside-region"));
}

TEST_F(GetImageArguments, PtzThatIsNotEngagedIsIgnored) {
  TestFrame whole(PIXEL_FORMAT_I420, kWidth, kHeight);
  ASSERT_EQ(DECOMP_OK, Get(whole, 0, 0, kWidth, kHeight));

  CDigitalPTZ disabled;
  disabled.SetPanTiltZoom(0.0f, 0.0f, 2.0f);
  ChosenPtz activeButNotEnabled(true);
  activeButNotEnabled.SetPanTiltZoom(0.0f, 0.0f, 2.0f);
  ChosenPtz enabledButNotActive(false);
  enabledButNotActive.enabled = true;
  enabledButNotActive.SetPanTiltZoom(0.0f, 0.0f, 2.0f);
  for (CDigitalPTZ* ptz :
       {static_cast<CDigitalPTZ*>(&disabled), static_cast<CDigitalPTZ*>(&activeButNotEnabled),
        static_cast<CDigitalPTZ*>(&enabledButNotActive)}) {
    TestFrame target(PIXEL_FORMAT_I420, kWidth, kHeight);
    ASSERT_EQ(DECOMP_OK, Get(target, 0, 0, kWidth, kHeight, ptz));
    EXPECT_TRUE(target.SamePictureBytes(whole, "ptz-ignored"));
  }
}

// Sizes above half the picture: at half or less the picture is halved first, and an exact half
// needs no libswscale step at all.
TEST_F(GetImageArguments, ConversionIsBuiltOnceWhileParametersStay) {
  TestFrame rgb(PIXEL_FORMAT_RGB24, 40, 30);
  ASSERT_EQ(DECOMP_OK, Get(rgb, 0, 0, kWidth, kHeight));
  const int built = decoder.GetConverterSetupCount();
  EXPECT_GT(built, 0);
  for (int frame = 1; frame < 10; ++frame) {
    ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, source, frame));
    ASSERT_EQ(DECOMP_OK, Get(rgb, 0, 0, kWidth, kHeight));
  }
  EXPECT_EQ(built, decoder.GetConverterSetupCount());

  TestFrame larger(PIXEL_FORMAT_RGB24, 48, 36);
  ASSERT_EQ(DECOMP_OK, Get(larger, 0, 0, kWidth, kHeight));
  const int rebuilt = decoder.GetConverterSetupCount();
  EXPECT_GT(rebuilt, built);
  ASSERT_EQ(DECOMP_OK, Get(larger, 0, 0, kWidth, kHeight));
  EXPECT_EQ(rebuilt, decoder.GetConverterSetupCount());
  ASSERT_EQ(DECOMP_OK, Get(rgb, 0, 0, kWidth, kHeight));
  EXPECT_GT(decoder.GetConverterSetupCount(), rebuilt);
}

TEST_F(GetImageArguments, PlainCopiesNeedNoConversion) {
  TestFrame same(PIXEL_FORMAT_I420, 32, 24);
  ASSERT_EQ(DECOMP_OK, Get(same, 8, 8, 32, 24));
  TestFrame swapped(PIXEL_FORMAT_YV12, kWidth, kHeight);
  ASSERT_EQ(DECOMP_OK, Get(swapped, 0, 0, kWidth, kHeight));
  EXPECT_EQ(0, decoder.GetConverterSetupCount());
}
