// Colour on real streams: colour bars encoded losslessly with libx264 and libx265, tagged with
// each matrix and range or not at all, at an SD and an HD size, and with MJPEG (untagged, full
// range), come out of GetImage as the reference conversion of the bars says (I420 in BT.601
// limited range, RGB24 as the bars were), and the renderer's BT.601 inverse of the delivered
// I420 gives the bars back. Also the host's override, the conventions for unsignalled streams
// and the plain copy that stays. The references are computed here from the standards' luma
// weights, not through libswscale. Lossy coding is left out on purpose where the codec allows:
// H.264 and H.265 bars are lossless, so every error measured is the decoder's conversion;
// MJPEG's bars fill whole blocks at its finest quantiser, which leaves their interiors exact
// but for rounding.
#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/PixelFormat.h>

#include "ColourBars.h"

namespace {

constexpr int kSdWidth = 160;
constexpr int kSdHeight = 120;
// MJPEG codes 16 x 16 blocks: bars of 48 x 48 pixels fill whole blocks.
constexpr int kMjpegSdWidth = 192;
constexpr int kMjpegSdHeight = 144;
constexpr int kHdWidth = 1280;
constexpr int kHdHeight = 720;
constexpr int kPictures = 2;

// Pixels closer than this to a bar edge are not measured (chroma subsampling and filters).
constexpr double kEdgeMargin = 4.0;
constexpr double kMeanLimit = 1.0;
constexpr int kMaxLimit = 3;

constexpr ColourSpace_t kBt601Limited{ColourMatrix::kBt601, ColourRange::kLimited};

struct ColourCase {
  std::string name;
  BarStream stream;
  ColourSpace_t expected;  // what the tags (or the conventions) make of the samples
};

void PrintTo(const ColourCase& test, std::ostream* out) { *out << test.name; }

// Mean and largest absolute error per channel over the bars' flat interiors.
struct ChannelErrors {
  std::array<double, 3> mean{};
  std::array<int, 3> max{};
};

using Samples = std::function<std::array<int, 3>(int, int)>;

bool IsFlat(int x, int y, int width, int height) {
  return DistanceToBlockEdge(x + 0.5, width, kBlockColumns) > kEdgeMargin &&
         DistanceToBlockEdge(y + 0.5, height, kBlockRows) > kEdgeMargin;
}

ChannelErrors Measure(int width, int height, const Samples& actual, const Samples& expected) {
  ChannelErrors errors;
  long long count = 0;
  std::array<long long, 3> sums{};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (!IsFlat(x, y, width, height)) continue;
      const std::array<int, 3> got = actual(x, y);
      const std::array<int, 3> want = expected(x, y);
      for (int c = 0; c < 3; ++c) {
        const int error = std::abs(got[c] - want[c]);
        sums[c] += error;
        errors.max[c] = std::max(errors.max[c], error);
      }
      ++count;
    }
  }
  for (int c = 0; c < 3; ++c) errors.mean[c] = count ? static_cast<double>(sums[c]) / count : 1e9;
  return errors;
}

::testing::AssertionResult WithinLimits(const ChannelErrors& errors, const std::string& what) {
  for (int c = 0; c < 3; ++c) {
    if (errors.mean[c] > kMeanLimit || errors.max[c] > kMaxLimit) {
      return ::testing::AssertionFailure() << what << ": channel " << c << " mean error "
                                           << errors.mean[c] << ", max " << errors.max[c];
    }
  }
  return ::testing::AssertionSuccess();
}

std::array<int, 3> AsArray(const Yuv& yuv) { return {yuv.y, yuv.u, yuv.v}; }
std::array<int, 3> AsArray(const Rgb& rgb) { return {rgb.r, rgb.g, rgb.b}; }

// The YUV samples of `frame`, bars at its own size, against the bars in BT.601 limited range.
::testing::AssertionResult DeliveredAs601(const TestFrame& frame, const std::string& what) {
  const int width = frame.Width();
  const int height = frame.Height();
  const auto delivered601 = [&](int x, int y) {
    return AsArray(ReferenceRgbToYuv(BlockColour(x, y, width, height), kBt601Weights, false));
  };
  return WithinLimits(
      Measure(
          width, height, [&](int x, int y) { return AsArray(frame.YuvAt(x, y)); }, delivered601),
      what + " against BT.601 limited range");
}

// GetImage of the whole picture at its own size in I420 and RGB24 against the references.
void ExpectBarsDelivered(CDecompressor& decoder, int width, int height) {
  TestFrame i420(PIXEL_FORMAT_I420, width, height);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, i420));
  TestFrame rgb(PIXEL_FORMAT_RGB24, width, height);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, rgb));
  const auto bars = [&](int x, int y) { return AsArray(BlockColour(x, y, width, height)); };
  EXPECT_TRUE(DeliveredAs601(i420, "I420"));
  EXPECT_TRUE(
      WithinLimits(Measure(
                       width, height, [&](int x, int y) { return AsArray(rgb.RgbAt(x, y)); }, bars),
                   "RGB24 against the bars"));
  // What the GL programs show: their BT.601 inverse of the delivered I420.
  EXPECT_TRUE(WithinLimits(
      Measure(
          width, height, [&](int x, int y) { return AsArray(ReferenceYuvToRgb(i420.YuvAt(x, y))); },
          bars),
      "the renderer's inverse of I420 against the bars"));
}

// Bars whose samples are in `samples` but tagged otherwise, decoded under `override`, arrive
// as the reference of `samples` says.
void ExpectOverrideRead(CDecompressor& decoder, AVColorSpace matrixTag, AVColorRange rangeTag,
                        const ColourSpace_t& samples, const ColourSpace_t& override) {
  const BarStream tagged{"libx264", kSdWidth, kSdHeight, matrixTag, rangeTag};
  decoder.SetColourOverride(override);
  ASSERT_TRUE(DecodeAll(decoder, EncodeBars(tagged, samples, kPictures), kPictures));
  EXPECT_EQ(samples, decoder.GetSourceColour());
  ExpectBarsDelivered(decoder, kSdWidth, kSdHeight);
}

class DecodedColour : public ::testing::TestWithParam<ColourCase> {};

constexpr ColourSpace_t Colour(ColourMatrix matrix, ColourRange range) {
  return ColourSpace_t{matrix, range};
}

constexpr ColourMatrix k709 = ColourMatrix::kBt709;
constexpr ColourRange kLimited = ColourRange::kLimited;
constexpr ColourRange kFull = ColourRange::kFull;

constexpr AVColorSpace kMatrixTags[] = {AVCOL_SPC_SMPTE170M, AVCOL_SPC_BT709, AVCOL_SPC_BT2020_NCL,
                                        AVCOL_SPC_UNSPECIFIED};
constexpr AVColorRange kRangeTags[] = {AVCOL_RANGE_MPEG, AVCOL_RANGE_JPEG, AVCOL_RANGE_UNSPECIFIED};

ColourCase Case(const char* encoder, int width, int height, AVColorSpace matrix,
                AVColorRange range) {
  const BarStream stream{encoder, width, height, matrix, range};
  return ColourCase{BarStreamName(stream), stream, TaggedColour(stream)};
}

// Every tagging at the SD size; at the HD size untagged (the convention), tagged BT.601,
// BT.709 and BT.2020, and full range tagged and by the convention's matrix. MJPEG carries no
// tags (full range by the JPEG convention) and is lossy: its bars are whole 16 x 16 blocks,
// so their interiors come through its quantiser unchanged but for rounding.
std::vector<ColourCase> AllCases() {
  std::vector<ColourCase> cases;
  for (const char* encoder : {"libx264", "libx265"}) {
    for (AVColorSpace matrix : kMatrixTags) {
      for (AVColorRange range : kRangeTags) {
        cases.push_back(Case(encoder, kSdWidth, kSdHeight, matrix, range));
      }
    }
    const std::pair<AVColorSpace, AVColorRange> hdTags[] = {
        {AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED},
        {AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG},
        {AVCOL_SPC_BT709, AVCOL_RANGE_MPEG},
        {AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG},
        {AVCOL_SPC_BT709, AVCOL_RANGE_JPEG},
        {AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_JPEG}};
    for (const auto& [matrix, range] : hdTags) {
      cases.push_back(Case(encoder, kHdWidth, kHdHeight, matrix, range));
    }
  }
  cases.push_back(
      Case("mjpeg", kMjpegSdWidth, kMjpegSdHeight, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_JPEG));
  cases.push_back(Case("mjpeg", kHdWidth, kHdHeight, AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_JPEG));
  return cases;
}

}  // namespace

TEST_P(DecodedColour, BarsArriveAsTheReferenceSaysInI420AndRgb) {
  const ColourCase& test = GetParam();
  CDecompressor decoder;
  ASSERT_TRUE(DecodeAll(decoder, EncodeBars(test.stream, test.expected, kPictures), kPictures));
  EXPECT_EQ(test.expected, decoder.GetSourceColour());
  ExpectBarsDelivered(decoder, test.stream.width, test.stream.height);
}

INSTANTIATE_TEST_SUITE_P(Streams, DecodedColour, ::testing::ValuesIn(AllCases()),
                         [](const ::testing::TestParamInfo<ColourCase>& info) {
                           return info.param.name;
                         });

TEST(DecoderColour, AnOverrideReadsA601TaggedStreamAs709) {
  CDecompressor decoder;
  ExpectOverrideRead(decoder, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG, Colour(k709, kLimited),
                     ColourSpace_t{ColourMatrix::kBt709, ColourRange::kFromStream});
}

TEST(DecoderColour, AnOverrideOfTheRangeAloneKeepsTheStreamsMatrix) {
  CDecompressor decoder;
  ExpectOverrideRead(decoder, AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, Colour(k709, kFull),
                     ColourSpace_t{ColourMatrix::kFromStream, ColourRange::kFull});

  // Clearing the override reads the stream as it is tagged again.
  decoder.SetColourOverride(ColourSpace_t{});
  EXPECT_EQ(ColourSpace_t{}, decoder.GetColourOverride());
  EXPECT_EQ(Colour(k709, kLimited), decoder.GetSourceColour());
}

TEST(DecoderColour, ABt601PictureIsCopiedAsItIsAndABt709OneConverted) {
  BarStream test{"libx264", kSdWidth, kSdHeight, AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG};
  CDecompressor plain;
  ASSERT_TRUE(DecodeAll(plain, EncodeBars(test, kBt601Limited, kPictures), kPictures));
  TestFrame i420(PIXEL_FORMAT_I420, kSdWidth, kSdHeight);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(plain, i420));
  EXPECT_TRUE(i420.SamePictureBytes(BarsIn(kBt601Limited, kSdWidth, kSdHeight), "plain-601"));
  EXPECT_EQ(0, plain.GetConverterSetupCount());

  // The red bar's luma: BT.709 codes it 80, BT.601 91 (within the rounding of the 709 samples).
  const ColourSpace_t bt709 = Colour(k709, kLimited);
  test.matrixTag = AVCOL_SPC_BT709;
  CDecompressor converted;
  ASSERT_TRUE(DecodeAll(converted, EncodeBars(test, bt709, kPictures), kPictures));
  ASSERT_EQ(DECOMP_OK, GetWholeImage(converted, i420));
  const int x = kSdWidth / kBlockColumns / 2;
  const int y = kSdHeight / kBlockRows / 2;
  EXPECT_EQ(80, BarsIn(bt709, kSdWidth, kSdHeight).YuvAt(x, y).y);
  EXPECT_NEAR(91, i420.YuvAt(x, y).y, 1);
}

TEST(DecoderColour, RawPlanarFramesOfOddSizesAreReadWithTheOverrideToo) {
  constexpr int kOddWidth = 101;
  constexpr int kOddHeight = 75;
  for (int format : {PIXEL_FORMAT_I420, PIXEL_FORMAT_YUV422P}) {
    SCOPED_TRACE(format);
    CDecompressor decoder;
    decoder.SetColourOverride(Colour(k709, kFull));
    TestFrame raw = BarsIn(Colour(k709, kFull), kOddWidth, kOddHeight, format);
    ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, raw));
    ExpectBarsDelivered(decoder, kOddWidth, kOddHeight);
  }
}

// A scaled-down view (the facade's software scaling of small tiles) converts the colour too,
// into every YUV format: the planar ones by scaling first and rewriting the smaller picture,
// NV12 through libswscale.
TEST(DecoderColour, AScaledDownViewIsConvertedIntoEveryYuvFormat) {
  constexpr int kWidth = 320;
  constexpr int kHeight = 240;
  for (const ColourSpace_t& colour : {Colour(k709, kLimited), Colour(k709, kFull)}) {
    CDecompressor decoder;
    decoder.SetColourOverride(colour);
    TestFrame raw = BarsIn(colour, kWidth, kHeight);
    ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, raw));
    for (int format :
         {PIXEL_FORMAT_I420, PIXEL_FORMAT_YV12, PIXEL_FORMAT_YUV422P, PIXEL_FORMAT_NV12}) {
      SCOPED_TRACE(format);
      TestFrame scaled(format, kWidth / 2, kHeight / 2);
      ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, scaled));
      EXPECT_TRUE(DeliveredAs601(scaled, "the scaled view"));
    }
  }
}

// Found by fuzzing: a scaled view one sample wide has chroma planes of no bytes, which a caller
// may leave null; the rewrite into BT.601 formed row addresses in them all the same (undefined
// behaviour that clang's sanitizer in the fuzz build reports, GCC's does not; the fuzz input
// fuzz/regressions/rawframe/null-chroma-of-a-one-sample-wide-view replays it). The luma comes
// out as with real chroma planes.
TEST(DecoderColour, AScaledViewOneSampleWideTakesNullChromaPlanes) {
  constexpr int kWidth = 320;
  constexpr int kHeight = 240;
  constexpr int kRows = 60;
  const ColourSpace_t colour = Colour(k709, kLimited);
  CDecompressor decoder;
  decoder.SetColourOverride(colour);
  TestFrame raw = BarsIn(colour, kWidth, kHeight);
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, raw));
  TestFrame withChroma(PIXEL_FORMAT_I420, 1, kRows);
  ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, withChroma));
  std::vector<unsigned char> luma(kRows);
  unsigned char* planes[3] = {luma.data(), nullptr, nullptr};
  int pitches[3] = {1, 8, 8};  // pitches of planes that hold nothing may be anything
  ASSERT_EQ(DECOMP_OK, decoder.GetImage(planes, pitches, PIXEL_FORMAT_I420, 1, kRows, 0, 0, kWidth,
                                        kHeight, nullptr));
  for (int y = 0; y < kRows; ++y) EXPECT_EQ(withChroma.YuvAt(0, y).y, luma[y]) << "row " << y;
}

TEST(DecoderColour, MjpegIsFullRangeAndRawFramesAreBt601Limited) {
  const EncodedStream mjpeg = EncodeCamera("mjpeg", kSdWidth, kSdHeight, kStreamRate, 1);
  CDecompressor decoder;
  EXPECT_EQ(ColourSpace_t{}, decoder.GetSourceColour());
  ASSERT_EQ(DECOMP_OK, decoder.Open(mjpeg.info));
  const EncodedPacket& packet = mjpeg.packets.front();
  ASSERT_EQ(1, decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), 0));
  EXPECT_EQ(Colour(ColourMatrix::kBt601, kFull), decoder.GetSourceColour());

  // A raw HD frame is the library's own BT.601, whatever its size.
  TestFrame raw = NoiseFrame(PIXEL_FORMAT_I420, kHdWidth, kHdHeight);
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, raw));
  EXPECT_EQ(kBt601Limited, decoder.GetSourceColour());
}
