// Media sources: movie files written here with libavformat read back packet by packet into a
// decoder, the same over HTTP from a loopback server, and the failures of missing files,
// streams without video, refused connections and servers that never answer.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CMediaSource.h>
#include <decompressor/PixelFormat.h>

#include "TestHttpServer.h"
#include "TestMovieWriter.h"
#include "TestPictures.h"

namespace {

constexpr int kWidth = kStreamWidth;
constexpr int kHeight = kStreamHeight;
constexpr int kRate = kStreamRate;
constexpr int kFrames = 10;

// A short timeout for sources that are expected to fail.
constexpr int kShortTimeoutMs = 300;

struct Movie {
  const char* encoder;
  const char* codec;      // as the source reports it
  const char* extension;  // container
  bool globalHeader;
};

// A file in the tests' temporary directory, removed again when the test ends.
class ScratchFile {
 public:
  explicit ScratchFile(const std::string& name) : path(::testing::TempDir() + name) {}
  ~ScratchFile() { std::remove(path.c_str()); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  const std::string path;
};

// Writes kFrames camera pictures as a movie; false when that failed.
bool WriteMovie(const Movie& movie, const std::string& path) {
  CSyntheticCamera camera(kWidth, kHeight, kRate);
  TestEncoder encoder(movie.encoder, kWidth, kHeight, kRate, movie.globalHeader);
  if (!EncodeCameraFrames(camera, encoder, kFrames)) return false;
  TestMovieWriter writer(path, encoder);
  for (const EncodedPacket& packet : encoder.Packets()) {
    if (!writer.Write(packet)) return false;
  }
  return writer.Finish();
}

std::vector<unsigned char> ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::vector<unsigned char>(std::istreambuf_iterator<char>(file), {});
}

// The frame index of a timestamp in the stream's time base.
long long FrameIndex(long long pts, const VideoStreamInfo_t& info) {
  return (pts * info.timeBaseNum * kRate + info.timeBaseDen / 2) / info.timeBaseDen;
}

// Reads every packet of `source` into a new decoder; returns the pictures decoded.
int DecodeSource(CMediaSource& source, const std::string& name) {
  CDecompressor decoder;
  EXPECT_EQ(DECOMP_OK, decoder.Open(source.GetStreamInfo()));
  MediaPacket_t packet;
  int result = DECOMP_OK;
  while ((result = source.ReadPacket(packet)) == DECOMP_OK) {
    EXPECT_GE(decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts),
              0);
  }
  EXPECT_EQ(DECOMP_END_OF_STREAM, result);
  decoder.Drain();
  EXPECT_TRUE(
      CloseToCamera(decoder, FrameIndex(decoder.GetPts(), source.GetStreamInfo()), kRate, name));
  return static_cast<int>(decoder.GetFrameCount());
}

class MovieFile : public ::testing::TestWithParam<Movie> {};

}  // namespace

TEST_P(MovieFile, RoundTripsThroughAFile) {
  const Movie& movie = GetParam();
  const ScratchFile file(std::string("camera-") + movie.codec + "." + movie.extension);
  ASSERT_TRUE(WriteMovie(movie, file.path));

  CMediaSource source;
  ASSERT_EQ(DECOMP_OK, source.Open(file.path));
  EXPECT_TRUE(source.IsOpen());
  const VideoStreamInfo_t& info = source.GetStreamInfo();
  EXPECT_EQ(movie.codec, info.codec);
  EXPECT_EQ(kWidth, info.width);
  EXPECT_EQ(kHeight, info.height);
  EXPECT_EQ(movie.globalHeader, !info.extradata.empty());
  EXPECT_EQ(kFrames, DecodeSource(source, std::string("file-") + movie.codec));
  MediaPacket_t packet;
  EXPECT_EQ(DECOMP_END_OF_STREAM, source.ReadPacket(packet));
}

INSTANTIATE_TEST_SUITE_P(Containers, MovieFile,
                         ::testing::Values(Movie{"libx264", "h264", "mkv", true},
                                           Movie{"mpeg4", "mpeg4", "mp4", true},
                                           Movie{"mjpeg", "mjpeg", "avi", false},
                                           Movie{"libx265", "hevc", "mkv", true}),
                         [](const ::testing::TestParamInfo<Movie>& info) {
                           return std::string(info.param.codec) + "In" + info.param.extension;
                         });

TEST(MediaSource, KeyFramesAreMarked) {
  const Movie movie{"libx264", "h264", "mkv", true};
  const ScratchFile file("camera-keys.mkv");
  ASSERT_TRUE(WriteMovie(movie, file.path));
  CMediaSource source;
  ASSERT_EQ(DECOMP_OK, source.Open(file.path));
  MediaPacket_t packet;
  ASSERT_EQ(DECOMP_OK, source.ReadPacket(packet));
  EXPECT_TRUE(packet.keyFrame);
  EXPECT_FALSE(packet.data.empty());
  int keyFrames = 1;
  while (source.ReadPacket(packet) == DECOMP_OK) keyFrames += packet.keyFrame ? 1 : 0;
  // One key frame every ten pictures.
  EXPECT_EQ(1, keyFrames);
}

TEST(MediaSource, ReadsAStreamOverHttp) {
  const Movie movie{"libx264", "h264", "ts", false};
  const ScratchFile file("camera-http.ts");
  ASSERT_TRUE(WriteMovie(movie, file.path));
  TestHttpServer server(ReadFile(file.path));
  CMediaSource source;
  ASSERT_EQ(DECOMP_OK, source.Open(server.Url("camera.ts")));
  EXPECT_EQ("h264", source.GetStreamInfo().codec);
  EXPECT_EQ(kFrames, DecodeSource(source, "http"));
}

TEST(MediaSource, AMissingFileDoesNotOpen) {
  CMediaSource source;
  EXPECT_EQ(DECOMP_ERROR_OPEN_FAILED, source.Open(::testing::TempDir() + "no-such-movie.mkv"));
  EXPECT_FALSE(source.IsOpen());
  EXPECT_TRUE(source.GetStreamInfo().codec.empty());
  MediaPacket_t packet;
  EXPECT_EQ(DECOMP_ERROR_NOT_OPEN, source.ReadPacket(packet));
}

TEST(MediaSource, AStreamWithoutVideoDoesNotOpen) {
  // A WAVE file: one second of silence, no picture.
  const ScratchFile wave("silence.wav");
  {
    std::ofstream file(wave.path, std::ios::binary);
    const unsigned char header[44] = {'R', 'I', 'F',  'F',  0x24, 0x3E, 0,    0,    'W',  'A', 'V',
                                      'E', 'f', 'm',  't',  ' ',  16,   0,    0,    0,    1,   0,
                                      1,   0,   0x40, 0x1F, 0,    0,    0x80, 0x3E, 0,    0,   2,
                                      0,   16,  0,    'd',  'a',  't',  'a',  0,    0x3E, 0,   0};
    file.write(reinterpret_cast<const char*>(header), sizeof(header));
    const std::vector<char> silence(0x3E00, 0);
    file.write(silence.data(), static_cast<std::streamsize>(silence.size()));
  }
  CMediaSource source;
  EXPECT_EQ(DECOMP_ERROR_OPEN_FAILED, source.Open(wave.path));
  EXPECT_FALSE(source.IsOpen());
}

TEST(MediaSource, ARefusedConnectionDoesNotOpen) {
  int port = 0;
  {
    ListeningSocket closedAgain;
    ASSERT_TRUE(closedAgain.IsOpen());
    port = closedAgain.Port();
  }
  const std::string host = "127.0.0.1:" + std::to_string(port);
  CMediaSource source;
  EXPECT_EQ(DECOMP_ERROR_OPEN_FAILED, source.Open("http://" + host + "/camera.ts"));
  EXPECT_EQ(DECOMP_ERROR_OPEN_FAILED, source.Open("rtsp://" + host + "/camera"));
  EXPECT_FALSE(source.IsOpen());
}

TEST(MediaSource, AServerThatNeverAnswersTimesOut) {
  ListeningSocket silent;
  ASSERT_TRUE(silent.IsOpen());
  const std::string host = "127.0.0.1:" + std::to_string(silent.Port());
  CMediaSource source;
  EXPECT_EQ(DECOMP_ERROR_TIMEOUT, source.Open("http://" + host + "/camera.ts", kShortTimeoutMs));
  EXPECT_EQ(DECOMP_ERROR_TIMEOUT, source.Open("rtsp://" + host + "/camera", kShortTimeoutMs));
  EXPECT_FALSE(source.IsOpen());
}
