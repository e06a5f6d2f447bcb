// fuzz_seed_writer: writes the decoder harness's seed corpus, real streams of the synthetic
// camera encoded with libavcodec's encoders (as the decoder tests make them), in the
// harness's input layout (DecoderFuzzInput).
//
//   fuzz_seed_writer DIRECTORY   writes DIRECTORY/<codec>-<variant>, one file per stream
//
// The streams are small (64 x 48, a few pictures) so each seed stays a few KB and every
// execution is quick; the variants cover in-band and out-of-band headers, the chroma layouts
// and bit depths the encoders make, and a size change in the middle of a stream. It does not
// fuzz anything itself.
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <decompressor/CSyntheticCamera.h>

extern "C" {
#include <libavutil/log.h>
}

#include "DecoderFuzzInput.h"
#include "TestEncoder.h"

namespace {

constexpr int kRate = 25;
constexpr int kWidth = 64;
constexpr int kHeight = 48;

struct Seed {
  const char* name;
  const char* encoder;
  int codec;  // DecoderFuzzInput::Codec index
  AVPixelFormat pixelFormat;
  bool globalHeader;
  bool sizeChange;  // the stream goes on at half the size
  int frames;
  DecoderFuzzInput::Header header;
};

using Packets = std::vector<std::vector<uint8_t>>;

// Encodes `frames` camera pictures; adds the extradata first when the headers are global.
bool Encode(const Seed& seed, int width, int height, Packets& packets) {
  EncoderSettings settings;
  settings.globalHeader = seed.globalHeader;
  settings.pixelFormat = seed.pixelFormat;
  TestEncoder encoder(seed.encoder, width, height, kRate, settings);
  CSyntheticCamera camera(width, height, kRate);
  if (!encoder.IsOpen()) return false;
  for (int index = 0; index < seed.frames; ++index) {
    camera.Render(index);
    if (!encoder.Encode(camera.GetPlanes(), camera.GetPitches(), index)) return false;
  }
  if (!encoder.Finish()) return false;
  if (seed.globalHeader) packets.push_back(encoder.StreamInfo().extradata);
  for (const EncodedPacket& packet : encoder.Packets()) packets.push_back(packet.data);
  return true;
}

bool Write(const std::string& directory, const Seed& seed) {
  Packets packets;
  if (!Encode(seed, kWidth, kHeight, packets)) return false;
  if (seed.sizeChange && !Encode(seed, kWidth / 2, kHeight / 2, packets)) return false;
  DecoderFuzzInput::Header header = seed.header;
  header.flags = static_cast<uint8_t>(header.flags | seed.codec |
                                      (seed.globalHeader ? DecoderFuzzInput::kExtradata : 0));
  const std::vector<uint8_t> bytes = DecoderFuzzInput::Compose(header, packets);
  std::ofstream file(directory + "/" + seed.name, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(file);
}

constexpr uint8_t kDrain = DecoderFuzzInput::kDrain;
constexpr uint8_t kDrop = DecoderFuzzInput::kDropDamage;

// Headers: flags, format index, width - 1, height - 1, crop origin, crop size, padding, zoom.
const Seed kSeeds[] = {
    {"h264-inband", "libx264", 0, AV_PIX_FMT_NONE, false, false, 4, {kDrain, 0, 63, 47}},
    {"h264-global", "libx264", 0, AV_PIX_FMT_NONE, true, false, 4, {kDrain, 6, 31, 23, 0x11}},
    {"h264-422", "libx264", 0, AV_PIX_FMT_YUV422P, false, false, 3, {kDrain, 4, 64, 48}},
    {"h264-444", "libx264", 0, AV_PIX_FMT_YUV444P, false, false, 3, {kDrain, 8, 40, 30, 0, 0, 3}},
    {"h264-grey", "libx264", 0, AV_PIX_FMT_GRAY8, false, false, 3, {kDrain, 3, 20, 20}},
    {"h264-10bit", "libx264", 0, AV_PIX_FMT_YUV420P10LE, false, false, 3, {kDrain, 7, 63, 47}},
    {"h264-size-change",
     "libx264",
     0,
     AV_PIX_FMT_NONE,
     false,
     true,
     3,
     {kDrain | kDrop, 0, 31, 23}},
    {"hevc-inband", "libx265", 1, AV_PIX_FMT_NONE, false, false, 3, {kDrain, 0, 63, 47}},
    {"hevc-global",
     "libx265",
     1,
     AV_PIX_FMT_NONE,
     true,
     false,
     3,
     {kDrain, 5, 100, 70, 0x22, 0, 0, 16}},
    {"hevc-444", "libx265", 1, AV_PIX_FMT_YUV444P, false, false, 2, {kDrain, 6, 63, 47}},
    {"hevc-10bit", "libx265", 1, AV_PIX_FMT_YUV420P10LE, false, false, 2, {kDrain, 1, 32, 24}},
    {"mjpeg-420", "mjpeg", 2, AV_PIX_FMT_NONE, false, false, 2, {0, 6, 63, 47}},
    {"mjpeg-422", "mjpeg", 2, AV_PIX_FMT_YUVJ422P, false, false, 2, {0, 0, 15, 9, 0x31, 0x44}},
    {"mjpeg-444", "mjpeg", 2, AV_PIX_FMT_YUVJ444P, false, false, 2, {kDrop, 2, 63, 47, 0, 0, 7}},
    {"mpeg4-inband", "mpeg4", 3, AV_PIX_FMT_NONE, false, false, 4, {kDrain, 0, 63, 47}},
    {"mpeg4-global",
     "mpeg4",
     3,
     AV_PIX_FMT_NONE,
     true,
     false,
     4,
     {kDrain, 4, 127, 95, 0, 0, 0, 40}},
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s DIRECTORY\n", argv[0]);
    return 2;
  }
  av_log_set_level(AV_LOG_ERROR);
  int failed = 0;
  for (const Seed& seed : kSeeds) {
    if (!Write(argv[1], seed)) {
      std::fprintf(stderr, "cannot write seed %s\n", seed.name);
      ++failed;
    }
  }
  return failed == 0 ? 0 : 1;
}
