// The roles the renderer's frame pipeline asks of a decoder: a software decoder's answers,
// the refused hardware hand-over, presenting on a video output, and substitution of the
// decoder through its virtual operations.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/IVideoOutput.h>
#include <decompressor/PixelFormat.h>

#include "TestPictures.h"

namespace {

// Keeps a copy of every picture presented, and answers as told.
class RecordingOutput : public IVideoOutput {
 public:
  bool Present(unsigned char** planes, int* pitches, int format, int width, int height) override {
    ++presented;
    lastPlanes.assign(planes, planes + 3);
    lastPitches.assign(pitches, pitches + 3);
    lastFormat = format;
    picture = std::make_unique<TestFrame>(format, width, height);
    for (int plane = 0; plane < 3; ++plane) {
      const int rows = plane == 0 ? height : height / 2;
      for (int row = 0; row < rows; ++row) {
        std::memcpy(picture->Planes()[plane] + row * picture->Pitches()[plane],
                    planes[plane] + row * pitches[plane], picture->Pitches()[plane]);
      }
    }
    return accept;
  }
  void SetOutputRect(int, int, int, int) override {}

  bool accept = true;
  int presented = 0;
  int lastFormat = PIXEL_FORMAT_NONE;
  std::vector<unsigned char*> lastPlanes;
  std::vector<int> lastPitches;
  std::unique_ptr<TestFrame> picture;
};

// A host's own decoder: answers the roles differently and fills pictures with one value.
class SubstituteDecoder : public CDecompressor {
 public:
  int GetImage(unsigned char** planes, int* pitches, int, int width, int height, int, int, int, int,
               CDigitalPTZ*) override {
    for (int row = 0; row < height; ++row) std::memset(planes[0] + row * pitches[0], 77, width);
    return DECOMP_OK;
  }
  bool IsHardwareDecoding() const override { return true; }
  int GetHardwarePixelFormat() const override { return PIXEL_FORMAT_NV12; }
  bool RequiresSoftwarePath() const override { return false; }
  int CopyToHardwareImage(HardwareImageInfo&) override { return DECOMP_OK; }
  bool RenderToVideoOutput(IVideoOutput*) override { return true; }
};

}  // namespace

TEST(DecoderRoles, ASoftwareDecoderSaysSo) {
  CDecompressor decoder;
  EXPECT_FALSE(decoder.IsHardwareDecoding());
  EXPECT_EQ(PIXEL_FORMAT_NONE, decoder.GetHardwarePixelFormat());
  EXPECT_TRUE(decoder.RequiresSoftwarePath());
}

class DecoderRolesWithPicture : public DecoderFixture {};

TEST_F(DecoderRolesWithPicture, HardwareImagesAreRefusedAndTheRecordIsLeftAlone) {
  Load(PIXEL_FORMAT_I420, 16, 16);
  // The record's layout belongs to the renderer; any bytes stand in for it here.
  alignas(8) unsigned char record[128];
  std::memset(record, 0x5A, sizeof(record));
  EXPECT_NE(0, decoder.CopyToHardwareImage(*reinterpret_cast<HardwareImageInfo*>(record)));
  for (unsigned char byte : record) ASSERT_EQ(0x5A, byte);
}

class VideoOutputRoles : public DecoderFixture {
 protected:
  RecordingOutput output;
};

TEST_F(VideoOutputRoles, TheWholePictureIsShownInI420) {
  Load(PIXEL_FORMAT_RGB24, 48, 32);
  EXPECT_TRUE(decoder.RenderToVideoOutput(&output));
  EXPECT_EQ(1, output.presented);
  EXPECT_EQ(PIXEL_FORMAT_I420, output.lastFormat);
  EXPECT_EQ((std::vector<int>{48, 24, 24}), output.lastPitches);
  TestFrame expected(PIXEL_FORMAT_I420, 48, 32);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, expected));
  EXPECT_TRUE(output.picture->SamePictureBytes(expected, "video-output"));
}

TEST_F(VideoOutputRoles, TheOutputsAnswerIsPassedOn) {
  Load(PIXEL_FORMAT_I420, 16, 16);
  output.accept = false;
  EXPECT_FALSE(decoder.RenderToVideoOutput(&output));
  EXPECT_EQ(1, output.presented);
}

TEST_F(VideoOutputRoles, NothingIsPresentedWithoutAPictureOrAnOutput) {
  EXPECT_FALSE(decoder.RenderToVideoOutput(&output));
  EXPECT_EQ(0, output.presented);
  Load(PIXEL_FORMAT_I420, 16, 16);
  EXPECT_FALSE(decoder.RenderToVideoOutput(nullptr));
}

TEST_F(VideoOutputRoles, TheBufferIsKeptBetweenPictures) {
  Load(PIXEL_FORMAT_I420, 32, 16);
  ASSERT_TRUE(decoder.RenderToVideoOutput(&output));
  const std::vector<unsigned char*> planes = output.lastPlanes;
  Load(PIXEL_FORMAT_NV12, 32, 16, 1);
  ASSERT_TRUE(decoder.RenderToVideoOutput(&output));
  EXPECT_EQ(planes, output.lastPlanes);
}

TEST_F(VideoOutputRoles, OddSizedPicturesArePresentedWithTheTablePitches) {
  const TestFrame& raw = Load(PIXEL_FORMAT_I420, 33, 25);
  ASSERT_TRUE(decoder.RenderToVideoOutput(&output));
  EXPECT_EQ((std::vector<int>{33, 16, 16}), output.lastPitches);
  EXPECT_TRUE(output.picture->SamePictureBytes(raw, "video-output-odd"));
}

TEST(DecoderRoles, AHostCanSubstituteTheDecoder) {
  SubstituteDecoder substitute;
  CDecompressor& decoder = substitute;
  EXPECT_TRUE(decoder.IsHardwareDecoding());
  EXPECT_EQ(PIXEL_FORMAT_NV12, decoder.GetHardwarePixelFormat());
  EXPECT_FALSE(decoder.RequiresSoftwarePath());
  alignas(8) unsigned char record[128] = {};
  EXPECT_EQ(DECOMP_OK, decoder.CopyToHardwareImage(*reinterpret_cast<HardwareImageInfo*>(record)));
  EXPECT_TRUE(decoder.RenderToVideoOutput(nullptr));
  TestFrame target(PIXEL_FORMAT_RGB24, 4, 2);
  ASSERT_EQ(DECOMP_OK, decoder.GetImage(target.Planes(), target.Pitches(), PIXEL_FORMAT_RGB24, 4, 2,
                                        0, 0, 4, 2, nullptr));
  EXPECT_EQ(77, target.Planes()[0][0]);
}
