// The decoder's statistics against streams whose figures are known: an H.264 and an H.265
// camera stream (the latter with picture checksums, which is how damage shows there) at 25
// pictures per second (its bit rate over the last two seconds summed here from its packets),
// one with a single damaged packet (the damage runs to the next key frame), and the age of the
// latest picture on the wall clock. Not the rate window's arithmetic on its own; only what a
// host reads.
#include <chrono>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/PixelFormat.h>

#include "TestPictures.h"

namespace {

constexpr int kFrames = 100;  // four seconds
constexpr int kKeyInterval = 10;
constexpr int kDamagedPacket = 13;
constexpr int kWindowPictures = 2 * kStreamRate;

struct StatisticsCase {
  const char* name;
  const char* encoder;
  int pictureHash;    // EncoderSettings::pictureHash
  const char* codec;  // as the statistics name it
};

void PrintTo(const StatisticsCase& test, std::ostream* out) { *out << test.name; }

class StreamStatistics : public ::testing::TestWithParam<StatisticsCase> {
 protected:
  void SetUp() override {
    stream = EncodeInOrderCamera(kFrames, GetParam().encoder, GetParam().pictureHash);
    ASSERT_EQ(static_cast<size_t>(kFrames), stream.packets.size());
  }

  void DecodeAll() {
    ASSERT_EQ(DECOMP_OK, decoder.Open(stream.info));
    for (const EncodedPacket& packet : stream.packets) {
      decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts);
    }
  }

  // Bits per second over the last two seconds: the packets after the window's first, over
  // its length.
  double LastTwoSecondsBitRate() const {
    double bits = 0;
    for (int i = kFrames - kWindowPictures; i < kFrames; ++i) {
      bits += 8.0 * static_cast<double>(stream.packets[static_cast<size_t>(i)].data.size());
    }
    return bits / 2.0;
  }

  EncodedStream stream;
  CDecompressor decoder;
};

}  // namespace

TEST(DecoderStatistics, BeforeAnyPictureEverythingIsZeroAndTheAgeUnknown) {
  CDecompressor decoder;
  const DecoderStatistics_t statistics = decoder.GetStatistics();
  EXPECT_EQ(0, statistics.picturesDecoded);
  EXPECT_EQ(0.0, statistics.framesPerSecond);
  EXPECT_EQ(0.0, statistics.bitsPerSecond);
  EXPECT_EQ(-1.0, statistics.latestPictureAge);
  EXPECT_EQ(std::string(), statistics.codec);
  EXPECT_EQ(0, statistics.width);
}

TEST_P(StreamStatistics, RatesCountsAndDescriptionOfAKnownStream) {
  DecodeAll();
  const DecoderStatistics_t statistics = decoder.GetStatistics();
  EXPECT_EQ(kFrames, statistics.picturesDecoded);
  EXPECT_EQ(0, statistics.picturesDamaged);
  EXPECT_EQ(0, statistics.picturesDropped);
  EXPECT_NEAR(kStreamRate, statistics.framesPerSecond, 1e-9);
  EXPECT_NEAR(LastTwoSecondsBitRate(), statistics.bitsPerSecond, 1e-6);
  EXPECT_EQ(std::string(GetParam().codec), statistics.codec);
  EXPECT_EQ(kStreamWidth, statistics.width);
  EXPECT_EQ(kStreamHeight, statistics.height);
  EXPECT_EQ((ColourSpace_t{ColourMatrix::kBt601, ColourRange::kLimited}), statistics.colour);
}

TEST_P(StreamStatistics, OneDamagedPacketCountsUpToTheNextKeyFrame) {
  ASSERT_TRUE(stream.packets[kDamagedPacket - kDamagedPacket % kKeyInterval].keyFrame);
  std::vector<unsigned char>& data = stream.packets[kDamagedPacket].data;
  for (size_t i = data.size() / 2; i < data.size(); ++i) data[i] ^= 0x5A;
  DecodeAll();
  const DecoderStatistics_t statistics = decoder.GetStatistics();
  EXPECT_EQ(kFrames, statistics.picturesDecoded);
  EXPECT_EQ(kKeyInterval - kDamagedPacket % kKeyInterval, statistics.picturesDamaged);
  EXPECT_EQ(0, statistics.picturesDropped);
  EXPECT_NEAR(kStreamRate, statistics.framesPerSecond, 1e-9);
}

TEST_P(StreamStatistics, ReopeningStartsTheRatesAfresh) {
  DecodeAll();
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream.info));
  EXPECT_EQ(0.0, decoder.GetStatistics().framesPerSecond);
  EXPECT_EQ(0.0, decoder.GetStatistics().bitsPerSecond);
  EXPECT_EQ(kFrames, decoder.GetStatistics().picturesDecoded);
}

TEST(DecoderStatistics, TheLatestPictureAgesOnTheWallClock) {
  CDecompressor decoder;
  TestFrame raw = NoiseFrame(PIXEL_FORMAT_I420, 16, 16);
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, raw));
  const double fresh = decoder.GetStatistics().latestPictureAge;
  EXPECT_GE(fresh, 0.0);
  EXPECT_LT(fresh, 0.5);
  std::this_thread::sleep_for(std::chrono::milliseconds(60));
  const double aged = decoder.GetStatistics().latestPictureAge;
  EXPECT_GE(aged, 0.06);
  // A new picture starts the age again.
  ASSERT_EQ(DECOMP_OK, PutTestFrame(decoder, raw));
  EXPECT_LT(decoder.GetStatistics().latestPictureAge, aged);
}

INSTANTIATE_TEST_SUITE_P(Codecs, StreamStatistics,
                         ::testing::Values(StatisticsCase{"H264", "libx264", 0, "h264"},
                                           StatisticsCase{"H265", "libx265", 3, "hevc"}),
                         [](const ::testing::TestParamInfo<StatisticsCase>& info) {
                           return std::string(info.param.name);
                         });
