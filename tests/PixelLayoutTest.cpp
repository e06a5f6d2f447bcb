// The plane geometry of every pixel format, against the frame-buffer table's own numbers.
#include <gtest/gtest.h>

#include <decompressor/CPixelLayout.h>
#include <decompressor/PixelFormat.h>

namespace {

struct PlaneNumbers {
  int rowBytes;
  int rows;
  int pitch;
};

void ExpectPlanes(int format, int width, int height, std::initializer_list<PlaneNumbers> planes) {
  const CPixelLayout layout(format, width, height);
  SCOPED_TRACE(::testing::Message() << "format " << format << " " << width << "x" << height);
  ASSERT_TRUE(layout.IsValid());
  ASSERT_EQ(static_cast<int>(planes.size()), layout.GetPlaneCount());
  int plane = 0;
  for (const PlaneNumbers& expected : planes) {
    EXPECT_EQ(expected.rowBytes, layout.GetRowBytes(plane)) << "plane " << plane;
    EXPECT_EQ(expected.rows, layout.GetRows(plane)) << "plane " << plane;
    EXPECT_EQ(expected.pitch, layout.GetPitch(plane)) << "plane " << plane;
    ++plane;
  }
}

}  // namespace

TEST(PixelLayout, EvenSizesFollowTheTable) {
  ExpectPlanes(PIXEL_FORMAT_I420, 64, 48, {{64, 48, 64}, {32, 24, 32}, {32, 24, 32}});
  ExpectPlanes(PIXEL_FORMAT_YV12, 64, 48, {{64, 48, 64}, {32, 24, 32}, {32, 24, 32}});
  ExpectPlanes(PIXEL_FORMAT_YUV422P, 64, 48, {{64, 48, 64}, {32, 48, 32}, {32, 48, 32}});
  ExpectPlanes(PIXEL_FORMAT_NV12, 64, 48, {{64, 48, 64}, {64, 24, 64}});
  ExpectPlanes(PIXEL_FORMAT_YUYV, 64, 48, {{128, 48, 128}});
  ExpectPlanes(PIXEL_FORMAT_UYVY, 64, 48, {{128, 48, 128}});
  ExpectPlanes(PIXEL_FORMAT_RGB24, 64, 48, {{192, 48, 192}});
  ExpectPlanes(PIXEL_FORMAT_BGR24, 64, 48, {{192, 48, 192}});
  ExpectPlanes(PIXEL_FORMAT_RGBA32, 64, 48, {{256, 48, 256}});
}

TEST(PixelLayout, TotalsMatchTheTable) {
  const int w = 640;
  const int h = 480;
  EXPECT_EQ(w * h * 3 / 2, CPixelLayout(PIXEL_FORMAT_I420, w, h).GetTotalBytes());
  EXPECT_EQ(w * h * 3 / 2, CPixelLayout(PIXEL_FORMAT_YV12, w, h).GetTotalBytes());
  EXPECT_EQ(w * h * 3 / 2, CPixelLayout(PIXEL_FORMAT_NV12, w, h).GetTotalBytes());
  EXPECT_EQ(2 * w * h, CPixelLayout(PIXEL_FORMAT_YUV422P, w, h).GetTotalBytes());
  EXPECT_EQ(2 * w * h, CPixelLayout(PIXEL_FORMAT_YUYV, w, h).GetTotalBytes());
  EXPECT_EQ(2 * w * h, CPixelLayout(PIXEL_FORMAT_UYVY, w, h).GetTotalBytes());
  EXPECT_EQ(3 * w * h, CPixelLayout(PIXEL_FORMAT_RGB24, w, h).GetTotalBytes());
  EXPECT_EQ(3 * w * h, CPixelLayout(PIXEL_FORMAT_BGR24, w, h).GetTotalBytes());
  EXPECT_EQ(4 * w * h, CPixelLayout(PIXEL_FORMAT_RGBA32, w, h).GetTotalBytes());
}

TEST(PixelLayout, OddSizesRoundChromaDown) {
  ExpectPlanes(PIXEL_FORMAT_I420, 33, 25, {{33, 25, 33}, {16, 12, 16}, {16, 12, 16}});
  ExpectPlanes(PIXEL_FORMAT_YUV422P, 33, 25, {{33, 25, 33}, {16, 25, 16}, {16, 25, 16}});
  // 16 pairs in a row of 33 bytes.
  ExpectPlanes(PIXEL_FORMAT_NV12, 33, 25, {{33, 25, 33}, {32, 12, 33}});
  // 16 pairs and half a pair.
  ExpectPlanes(PIXEL_FORMAT_YUYV, 33, 25, {{66, 25, 66}});
  ExpectPlanes(PIXEL_FORMAT_RGB24, 33, 25, {{99, 25, 99}});
}

TEST(PixelLayout, OnePixelPicturesHaveEmptyChroma) {
  ExpectPlanes(PIXEL_FORMAT_I420, 1, 1, {{1, 1, 1}, {0, 0, 0}, {0, 0, 0}});
  ExpectPlanes(PIXEL_FORMAT_NV12, 1, 1, {{1, 1, 1}, {0, 0, 1}});
}

TEST(PixelLayout, UnknownFormatsAndBadSizesAreInvalid) {
  for (int format : {-1, 5, 7, 12, 20, 24, 100}) {
    EXPECT_FALSE(CPixelLayout(format, 64, 48).IsValid()) << format;
  }
  EXPECT_FALSE(CPixelLayout(PIXEL_FORMAT_I420, 0, 48).IsValid());
  EXPECT_FALSE(CPixelLayout(PIXEL_FORMAT_I420, 64, 0).IsValid());
  EXPECT_FALSE(CPixelLayout(PIXEL_FORMAT_I420, -2, 48).IsValid());
  EXPECT_FALSE(CPixelLayout(PIXEL_FORMAT_I420, CPixelLayout::kMaxDimension + 1, 48).IsValid());
  EXPECT_TRUE(CPixelLayout(PIXEL_FORMAT_I420, CPixelLayout::kMaxDimension, 48).IsValid());
  EXPECT_EQ(0, CPixelLayout(5, 64, 48).GetPlaneCount());
}

TEST(PixelLayout, SplitBufferPlacesPlanesBackToBack) {
  const CPixelLayout layout(PIXEL_FORMAT_I420, 64, 48);
  unsigned char buffer[64 * 48 * 3 / 2];
  unsigned char* planes[3];
  int pitches[3];
  layout.SplitBuffer(buffer, planes, pitches);
  EXPECT_EQ(buffer, planes[0]);
  EXPECT_EQ(buffer + 64 * 48, planes[1]);
  EXPECT_EQ(buffer + 64 * 48 + 32 * 24, planes[2]);
  EXPECT_EQ(64, pitches[0]);
  EXPECT_EQ(32, pitches[2]);

  const CPixelLayout packed(PIXEL_FORMAT_RGB24, 4, 2);
  packed.SplitBuffer(buffer, planes, pitches);
  EXPECT_EQ(nullptr, planes[1]);
  EXPECT_EQ(nullptr, planes[2]);
  EXPECT_EQ(0, pitches[1]);
  EXPECT_EQ(0, pitches[2]);
}
