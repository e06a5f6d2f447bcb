// Decoding compressed streams made here with libavcodec's encoders: every frame arrives, close
// to what was encoded; errors in the data are reported and, under the drop policy, the last
// good picture stays;
// a size change mid-stream is followed; many decoders come and go without leaking.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CPixelLayout.h>
#include <decompressor/IVideoOutput.h>
#include <decompressor/PixelFormat.h>

#include "DecoderFuzzInput.h"
#include "TestPictures.h"

namespace {

constexpr int kWidth = kStreamWidth;
constexpr int kHeight = kStreamHeight;
constexpr int kRate = kStreamRate;
constexpr int kFrames = 12;

struct Codec {
  const char* encoder;
  const char* decoder;
};

std::string Name(const Codec& codec) { return codec.decoder; }

int Feed(CDecompressor& decoder, const EncodedPacket& packet) {
  return decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts);
}

// Counts the pictures the video output was shown.
class CountingOutput : public IVideoOutput {
 public:
  bool Present(unsigned char**, int*, int, int, int) override {
    ++presented;
    return true;
  }
  void SetOutputRect(int, int, int, int) override {}
  int presented = 0;
};

class DecodedStream : public ::testing::TestWithParam<Codec> {
 protected:
  // Encodes `frames` camera pictures of `width` x `height` with the codec under test.
  std::vector<EncodedPacket> Encode(int width, int height, int frames = kFrames) {
    EncodedStream encoded = EncodeCamera(GetParam().encoder, width, height, kRate, frames);
    stream = encoded.info;
    return encoded.packets;
  }

  // The latest picture is close to the camera picture of its timestamp.
  ::testing::AssertionResult CloseToCamera(const std::string& label) {
    return ::CloseToCamera(decoder, decoder.GetPts(), kRate, Name(GetParam()) + "-" + label);
  }

  // Feeds every packet, checking each new picture; returns the pictures decoded.
  int DecodeAll(const std::vector<EncodedPacket>& packets, const std::string& label) {
    int pictures = 0;
    for (const EncodedPacket& packet : packets) {
      const int result = Feed(decoder, packet);
      EXPECT_GE(result, 0) << "packet at " << packet.pts;
      if (result > 0) {
        EXPECT_TRUE(CloseToCamera(label));
      }
      pictures += std::max(result, 0);
    }
    const int drained = decoder.Drain();
    EXPECT_GE(drained, 0);
    if (drained > 0) {
      EXPECT_TRUE(CloseToCamera(label));
    }
    return pictures + std::max(drained, 0);
  }

  // Decodes the first `count` packets and checks that they gave a picture.
  void DecodeFirst(const std::vector<EncodedPacket>& packets, int count) {
    for (int i = 0; i < count; ++i) ASSERT_GE(Feed(decoder, packets[i]), 0);
    ASSERT_TRUE(decoder.HasFrame());
  }

  // Feeds one damaged packet: reported, and the picture shown before it stays.
  void ExpectDamageReported(const std::vector<unsigned char>& damaged) {
    TestFrame before(PIXEL_FORMAT_I420, kWidth, kHeight);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, before));
    const long long pts = decoder.GetPts();
    const long long count = decoder.GetFrameCount();
    EXPECT_EQ(DECOMP_ERROR_CORRUPT_DATA,
              decoder.Decode(damaged.data(), static_cast<int>(damaged.size()), 1000));
    EXPECT_EQ(pts, decoder.GetPts());
    EXPECT_EQ(count, decoder.GetFrameCount());
    TestFrame after(PIXEL_FORMAT_I420, kWidth, kHeight);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, after));
    EXPECT_TRUE(after.SamePictureBytes(before, Name(GetParam()) + "-kept-after-damage"));
  }

  CDecompressor decoder;
  VideoStreamInfo_t stream;
};

constexpr Codec kCodecs[] = {
    {"mpeg4", "mpeg4"}, {"mjpeg", "mjpeg"}, {"libx264", "h264"}, {"libx265", "hevc"}};

// Codecs whose decoders notice a packet cut in half (HEVC conceals it silently).
constexpr Codec kTruncationCodecs[] = {{"mpeg4", "mpeg4"}, {"mjpeg", "mjpeg"}, {"libx264", "h264"}};

std::string ParamName(const ::testing::TestParamInfo<Codec>& info) { return Name(info.param); }

}  // namespace

TEST_P(DecodedStream, EveryFrameArrivesCloseToWhatWasEncoded) {
  const std::vector<EncodedPacket> packets = Encode(kWidth, kHeight);
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream));
  EXPECT_TRUE(decoder.IsOpen());
  EXPECT_EQ(kFrames, DecodeAll(packets, "decoded"));
  EXPECT_EQ(kFrames, decoder.GetFrameCount());
  EXPECT_EQ(kWidth, decoder.GetWidth());
  EXPECT_EQ(kHeight, decoder.GetHeight());
  EXPECT_EQ(kFrames - 1, decoder.GetPts());
}

TEST_P(DecodedStream, GarbageInsteadOfAPacketIsReportedAndThePictureStays) {
  const std::vector<EncodedPacket> packets = Encode(kWidth, kHeight);
  decoder.SetDamagePolicy(DamagePolicy::kDrop);
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream));
  DecodeFirst(packets, 5);
  std::vector<unsigned char> garbage(packets[5].data.size());
  for (size_t i = 0; i < garbage.size(); ++i) garbage[i] = Noise(static_cast<int>(i), 0, 9);
  ExpectDamageReported(garbage);
}

TEST_P(DecodedStream, DecodingGoesOnAfterDamage) {
  const std::vector<EncodedPacket> packets = Encode(kWidth, kHeight);
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream));
  DecodeFirst(packets, 3);
  const std::vector<unsigned char> garbage(64, 0xFF);
  decoder.Decode(garbage.data(), static_cast<int>(garbage.size()), 99);
  for (size_t i = 3; i < packets.size(); ++i) Feed(decoder, packets[i]);
  decoder.Drain();
  EXPECT_EQ(kFrames - 1, decoder.GetPts());
  EXPECT_TRUE(CloseToCamera("after-damage"));
}

TEST_P(DecodedStream, ASizeChangeMidStreamIsFollowed) {
  const std::vector<EncodedPacket> large = Encode(kWidth, kHeight, 6);
  const VideoStreamInfo_t first = stream;
  const std::vector<EncodedPacket> small = Encode(96, 64, 6);
  ASSERT_EQ(DECOMP_OK, decoder.Open(first));
  std::vector<EncodedPacket> packets = large;
  packets.insert(packets.end(), small.begin(), small.end());
  // libavcodec's MPEG-4 Part 2 decoder drops the picture it holds back for reordering when
  // the new headers arrive; the other codecs hand out all twelve.
  const int pictures = DecodeAll(packets, "size-change");
  EXPECT_EQ(std::string(GetParam().decoder) == "mpeg4" ? 11 : 12, pictures);
  EXPECT_EQ(96, decoder.GetWidth());
  EXPECT_EQ(64, decoder.GetHeight());
  EXPECT_EQ(96, decoder.GetStatistics().width);
  EXPECT_EQ(64, decoder.GetStatistics().height);

  // The next GetImage works on the new size: the old rectangle no longer fits.
  TestFrame target(PIXEL_FORMAT_I420, 96, 64);
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT,
            decoder.GetImage(target.Planes(), target.Pitches(), PIXEL_FORMAT_I420, 96, 64, 0, 0,
                             kWidth, kHeight, nullptr));
  EXPECT_TRUE(CloseToCamera("new-size"));
}

INSTANTIATE_TEST_SUITE_P(Codecs, DecodedStream, ::testing::ValuesIn(kCodecs), ParamName);

class TruncatedStream : public DecodedStream {};

TEST_P(TruncatedStream, ATruncatedPacketIsReportedAndThePictureStays) {
  const std::vector<EncodedPacket> packets = Encode(kWidth, kHeight);
  decoder.SetDamagePolicy(DamagePolicy::kDrop);
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream));
  DecodeFirst(packets, 5);
  const std::vector<unsigned char>& whole = packets[5].data;
  ExpectDamageReported(std::vector<unsigned char>(whole.begin(), whole.begin() + whole.size() / 2));
}

INSTANTIATE_TEST_SUITE_P(Codecs, TruncatedStream, ::testing::ValuesIn(kTruncationCodecs),
                         ParamName);

TEST(DecoderStream, H265IsAcceptedAsANameForHevc) {
  CDecompressor decoder;
  VideoStreamInfo_t stream;
  stream.codec = "h265";
  EXPECT_EQ(DECOMP_OK, decoder.Open(stream));
}

TEST(DecoderStream, UnknownCodecsAreReported) {
  CDecompressor decoder;
  for (const char* name : {"nosuchcodec", "", "aac"}) {
    VideoStreamInfo_t stream;
    stream.codec = name;
    EXPECT_EQ(DECOMP_ERROR_UNKNOWN_CODEC, decoder.Open(stream)) << name;
    EXPECT_FALSE(decoder.IsOpen());
  }
}

TEST(DecoderStream, DataBeforeOpenOrWithoutBytesIsRefused) {
  CDecompressor decoder;
  const unsigned char byte = 0;
  EXPECT_EQ(DECOMP_ERROR_NOT_OPEN, decoder.Decode(&byte, 1, 0));
  EXPECT_EQ(DECOMP_ERROR_NOT_OPEN, decoder.Drain());
  VideoStreamInfo_t stream;
  stream.codec = "h264";
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT, decoder.Decode(nullptr, 10, 0));
  EXPECT_EQ(DECOMP_ERROR_ARGUMENT, decoder.Decode(&byte, 0, 0));
  decoder.Close();
  EXPECT_FALSE(decoder.IsOpen());
  EXPECT_EQ(DECOMP_ERROR_NOT_OPEN, decoder.Decode(&byte, 1, 0));
}

TEST(DecoderStream, DrainHandsOutThePicturesTheCodecHeldBack) {
  const EncodedStream stream = EncodeCamera("libx264", kWidth, kHeight, kRate, kFrames);
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream.info));
  for (const EncodedPacket& packet : stream.packets) ASSERT_GE(Feed(decoder, packet), 0);
  const long long beforeDrain = decoder.GetFrameCount();
  EXPECT_LT(beforeDrain, kFrames);
  EXPECT_EQ(kFrames - beforeDrain, decoder.Drain());
  EXPECT_EQ(kFrames - 1, decoder.GetPts());

  // After draining the same decoder takes the stream again from its start.
  for (const EncodedPacket& packet : stream.packets) ASSERT_GE(Feed(decoder, packet), 0);
  decoder.Drain();
  EXPECT_EQ(2 * kFrames, decoder.GetFrameCount());
}

// Found by fuzzing: a corrupt H.264 header declared a picture of 3712 x 16480, which the codec
// decoded and every GetImage then converted (61 million pixels each time). A picture beyond
// the library's largest size is refused as damaged data, counted, and the last good one stays.
TEST(DecoderStream, APictureBeyondTheLargestSizeIsRefusedAndThePictureStays) {
  const EncodedStream small = EncodeCamera("mjpeg", kWidth, kHeight, kRate, 1);
  const int wide = CPixelLayout::kMaxDimension + 8;
  TestEncoder encoder("mjpeg", wide, 16, kRate);
  const std::vector<unsigned char> grey(static_cast<size_t>(wide) * 16, 128);
  unsigned char* planes[3] = {const_cast<unsigned char*>(grey.data()),
                              const_cast<unsigned char*>(grey.data()),
                              const_cast<unsigned char*>(grey.data())};
  const int pitches[3] = {wide, wide / 2, wide / 2};
  ASSERT_TRUE(encoder.Encode(planes, pitches, 1) && encoder.Finish());
  ASSERT_EQ(1u, encoder.Packets().size());

  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.Open(small.info));
  ASSERT_EQ(1, Feed(decoder, small.packets[0]));
  EXPECT_EQ(DECOMP_ERROR_CORRUPT_DATA, Feed(decoder, encoder.Packets()[0]));
  EXPECT_EQ(kWidth, decoder.GetWidth());
  EXPECT_EQ(kHeight, decoder.GetHeight());
  EXPECT_EQ(1, decoder.GetFrameCount());
  const DecoderStatistics_t statistics = decoder.GetStatistics();
  EXPECT_EQ(2, statistics.picturesDecoded);
  EXPECT_EQ(1, statistics.picturesDamaged);
  EXPECT_EQ(1, statistics.picturesDropped);
  EXPECT_TRUE(CloseToCamera(decoder, 0, kRate, "kept-after-oversized"));
}

// Found by fuzzing: an MPEG-4 stream whose headers leave a colour-matrix code that FFmpeg does
// not define (188) in the decoded picture; reading it as the field's enumeration is undefined
// behaviour (the sanitizer suite stops there). The matrix reads as unsignalled: BT.709 at the
// picture's HD size; the range as the stream's full-range flag says. The stream is the fuzz
// harness's kept input, played as the harness plays it.
TEST(DecoderStream, AColourCodeFfmpegDoesNotDefineReadsAsUnsignalled) {
  std::ifstream file(RENDERER_FUZZ_REGRESSIONS "/decoder/colour-matrix-code-no-standard-defines",
                     std::ios::binary);
  const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
  DecoderFuzzInput input(bytes.data(), bytes.size());
  ASSERT_TRUE(input.HasHeader());
  ASSERT_STREQ("mpeg4", input.Codec());
  VideoStreamInfo_t stream;
  stream.codec = input.Codec();
  DecoderFuzzInput::Packet packet;
  ASSERT_TRUE(input.GetHeader().flags & DecoderFuzzInput::kExtradata);
  ASSERT_TRUE(input.Next(packet));
  stream.extradata.assign(packet.data, packet.data + packet.size);
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream));
  int pictures = 0;
  for (int index = 0; input.Next(packet); ++index) {
    pictures += std::max(0, decoder.Decode(packet.data, packet.size, index));
  }
  pictures += std::max(0, decoder.Drain());
  ASSERT_GT(pictures, 0);
  const ColourSpace_t colour = decoder.GetSourceColour();
  ASSERT_GE(decoder.GetWidth(), 1280);
  EXPECT_EQ(ColourMatrix::kBt709, colour.matrix);
  EXPECT_EQ(ColourRange::kFull, colour.range);
  std::vector<unsigned char> rgb(static_cast<size_t>(decoder.GetWidth()) * decoder.GetHeight() * 3);
  unsigned char* planes[1] = {rgb.data()};
  int pitches[1] = {decoder.GetWidth() * 3};
  EXPECT_EQ(DECOMP_OK, decoder.GetImage(planes, pitches, PIXEL_FORMAT_RGB24, decoder.GetWidth(),
                                        decoder.GetHeight(), 0, 0, decoder.GetWidth(),
                                        decoder.GetHeight(), nullptr));
}

TEST(DecoderStream, ReopeningKeepsTheLastPicture) {
  const EncodedStream stream = EncodeCamera("mjpeg", kWidth, kHeight, kRate, 2);
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream.info));
  ASSERT_EQ(1, Feed(decoder, stream.packets[0]));
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream.info));
  EXPECT_TRUE(decoder.HasFrame());
  decoder.Close();
  EXPECT_TRUE(decoder.HasFrame());
  EXPECT_EQ(kWidth, decoder.GetWidth());
}

TEST(DecoderStream, ManyDecodersComeAndGoWithoutLeaking) {
  const EncodedStream stream = EncodeCamera("libx264", 64, 48, kRate, 4);
  TestFrame raw = NoiseFrame(PIXEL_FORMAT_YUYV, 32, 16);
  for (int round = 0; round < 40; ++round) {
    CDecompressor decoder;
    ASSERT_EQ(DECOMP_OK, decoder.Open(stream.info));
    for (const EncodedPacket& packet : stream.packets) Feed(decoder, packet);
    decoder.Drain();
    TestFrame rgb(PIXEL_FORMAT_RGB24, 40, 30);
    EXPECT_EQ(DECOMP_OK, GetWholeImage(decoder, rgb));
    CountingOutput output;
    EXPECT_TRUE(decoder.RenderToVideoOutput(&output));
    EXPECT_EQ(DECOMP_OK, PutTestFrame(decoder, raw));
    EXPECT_EQ(DECOMP_OK, GetWholeImage(decoder, rgb));
    if (round % 2 == 0) decoder.Close();
  }
}
