// Damage on a lossy link: an H.264 and an H.265 camera stream (a key frame every 10 pictures,
// no B-frames; the H.265 one with picture hashes of each kind, which is how the decoder sees
// damage there)
// with 1 % of its packets damaged at random (seeded, so every run damages the same bytes).
// Under concealment at least 99 % of the pictures are shown; under the drop policy no damaged
// picture is ever shown (each shown picture equals the undamaged decode of its timestamp);
// both count the damaged pictures and those predicted from them until the next key frame.
// Damage that hides from the codec (bytes that still decode validly) is not what this checks.
#include <algorithm>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/PixelFormat.h>

#include "TestPictures.h"

namespace {

constexpr int kFrames = 300;
constexpr double kDamagedShare = 0.01;
constexpr unsigned kSeed = 15;
constexpr int kDamagedBytes = 8;

int Feed(CDecompressor& decoder, const EncodedPacket& packet) {
  return decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts);
}

// Overwrites bytes in the second half of the packet: slice data, past the headers.
void Damage(std::vector<unsigned char>& data, std::mt19937& random) {
  std::uniform_int_distribution<size_t> at(data.size() / 2, data.size() - 1);
  std::uniform_int_distribution<int> byte(0, 255);
  for (int i = 0; i < kDamagedBytes; ++i)
    data[at(random)] = static_cast<unsigned char>(byte(random));
}

struct DamageCase {
  const char* name;
  const char* encoder;
  int pictureHash;  // EncoderSettings::pictureHash
};

void PrintTo(const DamageCase& test, std::ostream* out) { *out << test.name; }

constexpr DamageCase kH265Md5{"H265Md5", "libx265", 1};
constexpr DamageCase kH265Crc{"H265Crc", "libx265", 2};
constexpr DamageCase kH265Checksum{"H265Checksum", "libx265", 3};

class DamagedStream : public ::testing::TestWithParam<DamageCase> {
 protected:
  void SetUp() override {
    clean = EncodeInOrderCamera(kFrames, GetParam().encoder, GetParam().pictureHash);
    ASSERT_EQ(static_cast<size_t>(kFrames), clean.packets.size());
    damaged = clean;
    std::mt19937 random(kSeed);
    std::bernoulli_distribution chosen(kDamagedShare);
    // The first key frame stays whole, so there is a picture to begin with.
    for (size_t i = 1; i < damaged.packets.size(); ++i) {
      if (!chosen(random)) continue;
      Damage(damaged.packets[i].data, random);
      damagedPackets.push_back(i);
    }
    ASSERT_FALSE(damagedPackets.empty());
  }

  // Damaged pictures: each damaged packet's and every later one up to the next key frame.
  long long ExpectedDamage() const {
    std::vector<bool> damage(clean.packets.size(), false);
    for (size_t first : damagedPackets) {
      damage[first] = true;
      for (size_t i = first + 1; i < damage.size() && !clean.packets[i].keyFrame; ++i) {
        damage[i] = true;
      }
    }
    return std::count(damage.begin(), damage.end(), true);
  }

  // Feeds the damaged stream; calls `shown` after every call that showed pictures. Returns
  // the pictures shown.
  template <typename OnShown>
  int DecodeDamaged(CDecompressor& decoder, OnShown shown) {
    EXPECT_EQ(DECOMP_OK, decoder.Open(damaged.info));
    int pictures = 0;
    for (const EncodedPacket& packet : damaged.packets) {
      const int result = Feed(decoder, packet);
      if (result > 0) shown();
      pictures += std::max(result, 0);
    }
    return pictures + std::max(decoder.Drain(), 0);
  }

  EncodedStream clean;
  EncodedStream damaged;
  std::vector<size_t> damagedPackets;
};

}  // namespace

TEST_P(DamagedStream, ConcealmentShowsAtLeast99PercentAndCountsTheDamage) {
  CDecompressor decoder;
  EXPECT_EQ(DamagePolicy::kConceal, decoder.GetDamagePolicy());
  const int shown = DecodeDamaged(decoder, [] {});
  EXPECT_GE(shown, kFrames * 99 / 100);
  const DecoderStatistics_t statistics = decoder.GetStatistics();
  EXPECT_EQ(ExpectedDamage(), statistics.picturesDamaged);
  EXPECT_EQ(kFrames - shown, statistics.picturesDropped);
  EXPECT_EQ(kFrames - 1, decoder.GetPts());
}

TEST_P(DamagedStream, DroppingNeverShowsADamagedPictureAndCountsTheDamage) {
  // What every picture looks like undamaged.
  std::vector<TestFrame> expected;
  CDecompressor reference;
  ASSERT_EQ(DECOMP_OK, reference.Open(clean.info));
  for (const EncodedPacket& packet : clean.packets) {
    ASSERT_EQ(1, Feed(reference, packet));
    expected.emplace_back(PIXEL_FORMAT_I420, kStreamWidth, kStreamHeight);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(reference, expected.back()));
  }

  CDecompressor decoder;
  decoder.SetDamagePolicy(DamagePolicy::kDrop);
  const int shown = DecodeDamaged(decoder, [&] {
    TestFrame picture(PIXEL_FORMAT_I420, kStreamWidth, kStreamHeight);
    ASSERT_EQ(DECOMP_OK, GetWholeImage(decoder, picture));
    const size_t index = static_cast<size_t>(decoder.GetPts());
    ASSERT_LT(index, expected.size());
    EXPECT_TRUE(picture.SamePictureBytes(expected[index], "shown-" + std::to_string(index)));
  });
  const DecoderStatistics_t statistics = decoder.GetStatistics();
  EXPECT_EQ(ExpectedDamage(), statistics.picturesDamaged);
  EXPECT_EQ(statistics.picturesDamaged, statistics.picturesDropped);
  EXPECT_EQ(kFrames - ExpectedDamage(), shown);
}

std::string CaseName(const ::testing::TestParamInfo<DamageCase>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Codecs, DamagedStream,
                         ::testing::Values(DamageCase{"H264", "libx264", 0}, kH265Md5,
                                           kH265Checksum),
                         CaseName);

class HashedStream : public ::testing::TestWithParam<DamageCase> {};

// With B-frames (pictures come out in another order than their packets go in) and at a size
// the codec crops (168 x 100 coded as 176 x 112): every picture is checked against its own
// hash, and none is accused; CRC hashes, which are not checked, accuse none either.
TEST_P(HashedStream, AnUndamagedStreamHasNoDamage) {
  EncoderSettings settings;
  settings.pictureHash = GetParam().pictureHash;
  const EncodedStream stream = EncodeCamera("libx265", 168, 100, kStreamRate, 40, settings);
  CDecompressor decoder;
  decoder.SetDamagePolicy(DamagePolicy::kDrop);
  ASSERT_EQ(DECOMP_OK, decoder.Open(stream.info));
  for (const EncodedPacket& packet : stream.packets) {
    ASSERT_GE(Feed(decoder, packet), 0);
  }
  ASSERT_GE(decoder.Drain(), 0);
  const DecoderStatistics_t statistics = decoder.GetStatistics();
  EXPECT_EQ(40, statistics.picturesDecoded);
  EXPECT_EQ(0, statistics.picturesDamaged);
  EXPECT_EQ(168, decoder.GetWidth());
  EXPECT_EQ(100, decoder.GetHeight());
  EXPECT_TRUE(CloseToCamera(decoder, 39, kStreamRate, "hashed-last"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, HashedStream, ::testing::Values(kH265Md5, kH265Crc, kH265Checksum),
                         CaseName);
