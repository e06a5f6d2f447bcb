// Decoded colour through the OpenGL back-end, as the X server shows it: colour bars encoded
// with libx264 and libx265, tagged BT.601, BT.709, full range or not at all, at an SD and an
// HD size, are decoded and delivered by GetImage as I420 (BT.601 limited range, whatever the
// stream's colour) into the frame buffer the GL back-end lends, at the tile's size; the tile is
// drawn and read back from the X server. Within the GL suites' tolerance, every pixel must show
// the GL programs' BT.601 inverse of the delivered samples, and the bars' interiors the
// programs' inverse of the bars' exact BT.601 samples: the colours the bars were made of, in
// whatever matrix and range the stream carried them, as the programs show BT.601.
#include <string>
#include <vector>

#include <renderer/InternalGLCanvas.h>

#include "ColourBars.h"
#include "GLFrameTest.h"

namespace {

constexpr int kPictures = 2;
// Pixels closer than this to a bar edge are not compared with the bars (chroma subsampling,
// the decoder's scaler and the texture sampling all blend there).
constexpr double kEdgeMargin = 4.0;

std::vector<BarStream> StreamsOf(const char* encoder) {
  return {{encoder, 160, 120, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG},
          {encoder, 160, 120, AVCOL_SPC_BT709, AVCOL_RANGE_JPEG},
          {encoder, 160, 120, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED},
          {encoder, 1280, 720, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
          {encoder, 1280, 720, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_JPEG},
          {encoder, 1280, 720, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED}};
}

// The delivered samples as a picture of the GL frame suites, whose texels show the programs'
// conversion of their luma and their 2 x 2 block's chroma.
FramePicture AsFramePicture(const TestFrame& delivered) {
  return FramePicture::MakeYuv(
      PIXEL_FORMAT_I420, wxSize(delivered.Width(), delivered.Height()),
      [&delivered](int x, int y) { return delivered.YuvAt(x, y).y; },
      [&delivered](int cx, int cy) {
        const Yuv sample = delivered.YuvAt(2 * cx, 2 * cy);
        return FramePicture::Yuv{0, sample.u, sample.v};
      });
}

// What the programs make of a bar: their conversion of its exact BT.601 limited-range samples,
// before any rounding. That is the bar's own colour moved by the programs' black level (they
// subtract it after scaling luma, 1.1643 Y - 0.0625, rather than before), about 3, 2 and 4
// levels brighter in red, green and blue.
wxColour ProgramsShow(const Rgb& bar) {
  const ExactYuv samples = ReferenceRgbToExactYuv(bar);
  return FramePicture::ProgramColour(samples.y, samples.u, samples.v);
}

// The programs' colours of the bars in their interiors; elsewhere what `shown` holds.
wxImage BarsExpected(const wxImage& shown) {
  wxImage expected = shown.Copy();
  const int width = shown.GetWidth();
  const int height = shown.GetHeight();
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const bool flat = DistanceToBlockEdge(x + 0.5, width, kBlockColumns) > kEdgeMargin &&
                        DistanceToBlockEdge(y + 0.5, height, kBlockRows) > kEdgeMargin;
      if (!flat) continue;
      const wxColour bar = ProgramsShow(BlockColour(x, y, width, height));
      expected.SetRGB(x, y, bar.Red(), bar.Green(), bar.Blue());
    }
  }
  return expected;
}

class DecodedColourOnScreen : public GLFrameTest,
                              public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    GLFrameTest::SetUp();
    ASSERT_TRUE(MoveToScreenPlace());
  }

  // GetImage of the whole picture into the renderer's lent buffer, as the facade's slow road
  // does, and the same call into `delivered`, to know the samples.
  ::testing::AssertionResult Deliver(GLTestRenderer* renderer, CDecompressor& decoder,
                                     TestFrame& delivered) {
    unsigned char* planes[3] = {};
    int pitches[3] = {};
    const int width = delivered.Width();
    const int height = delivered.Height();
    if (!renderer->GetFrameBuffer(width, height, PIXEL_FORMAT_I420, planes, pitches)) {
      return ::testing::AssertionFailure() << "GetFrameBuffer failed";
    }
    const int lent = decoder.GetImage(planes, pitches, PIXEL_FORMAT_I420, width, height, 0, 0,
                                      decoder.GetWidth(), decoder.GetHeight(), nullptr);
    if (!renderer->FlushFrameBuffer(planes, pitches)) {
      return ::testing::AssertionFailure() << "FlushFrameBuffer failed";
    }
    if (lent != DECOMP_OK || GetWholeImage(decoder, delivered) != DECOMP_OK) {
      return ::testing::AssertionFailure() << "GetImage failed";
    }
    return NoGLError();
  }
};

}  // namespace

TEST_P(DecodedColourOnScreen, TheProgramsShowTheBarsOfEveryTaggedStream) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const wxSize size = tile->GetClientSize();
  for (const BarStream& stream : StreamsOf(GetParam())) {
    const std::string name = TestName() + "-" + BarStreamName(stream);
    SCOPED_TRACE(name);
    CDecompressor decoder;
    ASSERT_TRUE(DecodeAll(decoder, EncodeBars(stream, TaggedColour(stream), kPictures), kPictures));
    TestFrame delivered(PIXEL_FORMAT_I420, size.x, size.y);
    ASSERT_TRUE(Deliver(renderer, decoder, delivered));
    wxImage expected;
    ASSERT_TRUE(Expected(renderer, AsFramePicture(delivered), &expected));
    PaintFrame(renderer);
    const wxImage shown = ReadWindow(renderer->m_canvas);
    EXPECT_TRUE(ImagesNear(shown, expected, kYuvConversionTolerance, name + "-programs"));
    EXPECT_TRUE(ImagesNear(shown, BarsExpected(shown), kYuvConversionTolerance, name + "-bars"));
  }
}

INSTANTIATE_TEST_SUITE_P(Encoders, DecodedColourOnScreen, ::testing::Values("libx264", "libx265"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                           return std::string(info.param);
                         });
