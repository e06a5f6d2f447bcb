// Media sources: movie files written here with libavformat read back packet by packet into a
// decoder, the same over HTTP from a loopback server, and the failures of missing files,
// streams without video, refused connections, servers that never answer, streams that stop
// without an end, files cut off in the middle of a packet, and a picture size that changes
// in the middle of a stream. Every failure must come back as a result code, in time.
#include <algorithm>
#include <chrono>
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

// A short timeout for sources that are expected to fail, and how much longer than it a call
// that times out may take (the interrupt is polled, and the machine is shared).
constexpr int kShortTimeoutMs = 300;
constexpr long long kTimeoutSlackMs = 1500;

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

// Writes `frames` camera pictures as a movie; false when that failed.
bool WriteMovie(const Movie& movie, const std::string& path, int frames = kFrames) {
  CSyntheticCamera camera(kWidth, kHeight, kRate);
  TestEncoder encoder(movie.encoder, kWidth, kHeight, kRate, movie.globalHeader);
  if (!EncodeCameraFrames(camera, encoder, frames)) return false;
  TestMovieWriter writer(path, encoder);
  for (const EncodedPacket& packet : encoder.Packets()) {
    if (!writer.Write(packet)) return false;
  }
  return writer.Finish();
}

// Milliseconds that `call` took.
template <typename Call>
long long MillisecondsOf(Call call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  const auto taken = std::chrono::steady_clock::now() - start;
  return std::chrono::duration_cast<std::chrono::milliseconds>(taken).count();
}

std::vector<unsigned char> ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::vector<unsigned char>(std::istreambuf_iterator<char>(file), {});
}

void WriteFile(const std::string& path, const std::vector<unsigned char>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
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

// Every codec in a container that carries it, with headers out of band and in band.
const Movie kMovies[] = {{"libx264", "h264", "mkv", true},
                         {"libx264", "h264", "ts", false},
                         {"mpeg4", "mpeg4", "mp4", true},
                         {"mjpeg", "mjpeg", "avi", false},
                         {"libx265", "hevc", "mkv", true}};

std::string MovieName(const ::testing::TestParamInfo<Movie>& info) {
  return std::string(info.param.codec) + "In" + info.param.extension;
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
  // The transport-stream demuxer gathers in-band headers as extradata itself.
  if (std::string(movie.extension) != "ts") {
    EXPECT_EQ(movie.globalHeader, !info.extradata.empty());
  }
  EXPECT_EQ(kFrames, DecodeSource(source, std::string("file-") + movie.codec));
  MediaPacket_t packet;
  EXPECT_EQ(DECOMP_END_OF_STREAM, source.ReadPacket(packet));
}

INSTANTIATE_TEST_SUITE_P(Containers, MovieFile, ::testing::ValuesIn(kMovies), MovieName);

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
  for (const std::string& url : {"http://" + host + "/camera.ts", "rtsp://" + host + "/camera"}) {
    int result = DECOMP_OK;
    const long long taken = MillisecondsOf([&] { result = source.Open(url, kShortTimeoutMs); });
    EXPECT_EQ(DECOMP_ERROR_TIMEOUT, result) << url;
    EXPECT_LT(taken, kShortTimeoutMs + kTimeoutSlackMs) << url;
  }
  EXPECT_FALSE(source.IsOpen());
}

TEST(MediaSource, AServerThatAcceptsAndNeverAnswersTimesOutInTime) {
  HttpReply nothing;
  nothing.headers = false;
  TestHttpServer server({}, nothing);
  CMediaSource source;
  int result = DECOMP_OK;
  const long long taken =
      MillisecondsOf([&] { result = source.Open(server.Url("camera.ts"), kShortTimeoutMs); });
  EXPECT_EQ(DECOMP_ERROR_TIMEOUT, result);
  EXPECT_LT(taken, kShortTimeoutMs + kTimeoutSlackMs);
  EXPECT_FALSE(source.IsOpen());
}

TEST(MediaSource, AServerThatFallsSilentAfterItsHeadersTimesOut) {
  HttpReply headersOnly;
  headersOnly.bodyBytes = 0;
  TestHttpServer server(std::vector<unsigned char>(100000, 0x47), headersOnly);
  CMediaSource source;
  int result = DECOMP_OK;
  const long long taken =
      MillisecondsOf([&] { result = source.Open(server.Url("camera.ts"), kShortTimeoutMs); });
  EXPECT_EQ(DECOMP_ERROR_TIMEOUT, result);
  EXPECT_LT(taken, kShortTimeoutMs + kTimeoutSlackMs);
}

// A live stream that stops without an end: the packets that came are read, then a read times
// out (it does not wait for ever, and does not pretend the stream ended).
TEST(MediaSource, AStreamThatStopsWithoutAnEndTimesOutAfterItsPackets) {
  const Movie movie{"libx264", "h264", "ts", false};
  const ScratchFile file("camera-stall.ts");
  ASSERT_TRUE(WriteMovie(movie, file.path, 50));
  const std::vector<unsigned char> body = ReadFile(file.path);
  HttpReply stall;
  stall.bodyBytes = body.size() * 3 / 4;
  TestHttpServer server(body, stall);
  CMediaSource source;
  ASSERT_EQ(DECOMP_OK, source.Open(server.Url("camera.ts"), kShortTimeoutMs));
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.Open(source.GetStreamInfo()));
  MediaPacket_t packet;
  int packets = 0;
  int result = DECOMP_OK;
  for (;;) {
    const long long taken = MillisecondsOf([&] { result = source.ReadPacket(packet); });
    EXPECT_LT(taken, kShortTimeoutMs + kTimeoutSlackMs);
    if (result != DECOMP_OK) break;
    ++packets;
    decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts);
  }
  EXPECT_EQ(DECOMP_ERROR_TIMEOUT, result);
  EXPECT_GT(packets, 10);
  EXPECT_LT(packets, 50);
  EXPECT_TRUE(decoder.HasFrame());
  // Closing does not wait on the silent server either.
  EXPECT_LT(MillisecondsOf([&] { source.Close(); }), kTimeoutSlackMs);
  EXPECT_EQ(DECOMP_ERROR_NOT_OPEN, source.ReadPacket(packet));
}

class TruncatedFile : public ::testing::TestWithParam<Movie> {};

// A file cut off in the middle of a packet (a recording that was being written when the
// camera lost power): what is there is read and decoded, the end comes back as a result code
// (or, where the container keeps its index at the end, the file does not open), in time.
TEST_P(TruncatedFile, IsReadUpToTheCutAndEndsWithAResultCode) {
  const Movie& movie = GetParam();
  const ScratchFile file(std::string("camera-cut-") + movie.codec + "." + movie.extension);
  ASSERT_TRUE(WriteMovie(movie, file.path, 30));
  std::vector<unsigned char> bytes = ReadFile(file.path);
  bytes.resize(bytes.size() * 11 / 20);
  WriteFile(file.path, bytes);

  CMediaSource source;
  const int opened = source.Open(file.path, kShortTimeoutMs);
  if (std::string(movie.extension) == "mp4") {
    EXPECT_EQ(DECOMP_ERROR_OPEN_FAILED, opened);  // the index (moov) was written last
    return;
  }
  ASSERT_EQ(DECOMP_OK, opened);
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.Open(source.GetStreamInfo()));
  MediaPacket_t packet;
  int packets = 0;
  int result = DECOMP_OK;
  const long long taken = MillisecondsOf([&] {
    while ((result = source.ReadPacket(packet)) == DECOMP_OK && packets < 1000) {
      ++packets;
      const int decoded =
          decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts);
      EXPECT_TRUE(decoded >= 0 || decoded == DECOMP_ERROR_CORRUPT_DATA) << decoded;
    }
  });
  EXPECT_TRUE(result == DECOMP_END_OF_STREAM || result == DECOMP_ERROR_IO) << result;
  EXPECT_LT(taken, kShortTimeoutMs + kTimeoutSlackMs);
  EXPECT_GT(packets, 5);
  EXPECT_LT(packets, 30);
  EXPECT_GE(decoder.Drain(), DECOMP_ERROR_CORRUPT_DATA);
  EXPECT_TRUE(decoder.HasFrame());
  EXPECT_EQ(kWidth, decoder.GetStatistics().width);
}

INSTANTIATE_TEST_SUITE_P(Containers, TruncatedFile, ::testing::ValuesIn(kMovies), MovieName);

// A camera that changes its picture size in the middle of a stream (a new SPS in-band): the
// source goes on reading, the decoder follows, and the new size is reported and delivered.
TEST(MediaSource, APictureSizeChangeInTheStreamIsFollowed) {
  constexpr int kNewWidth = 96;
  constexpr int kNewHeight = 64;
  const ScratchFile file("camera-resize.ts");
  {
    TestEncoder before("libx264", kWidth, kHeight, kRate);
    TestEncoder after("libx264", kNewWidth, kNewHeight, kRate);
    CSyntheticCamera large(kWidth, kHeight, kRate);
    CSyntheticCamera small(kNewWidth, kNewHeight, kRate);
    ASSERT_TRUE(EncodeCameraFrames(large, before, 6));
    ASSERT_TRUE(EncodeCameraFrames(small, after, 6));
    TestMovieWriter writer(file.path, before);
    for (const EncodedPacket& packet : before.Packets()) ASSERT_TRUE(writer.Write(packet));
    for (EncodedPacket packet : after.Packets()) {
      packet.pts += 6;
      packet.dts += 6;
      ASSERT_TRUE(writer.Write(packet));
    }
    ASSERT_TRUE(writer.Finish());
  }
  CMediaSource source;
  ASSERT_EQ(DECOMP_OK, source.Open(file.path));
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.Open(source.GetStreamInfo()));
  MediaPacket_t packet;
  int sizes = 0;
  int lastWidth = 0;
  while (source.ReadPacket(packet) == DECOMP_OK) {
    ASSERT_GE(decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts),
              0);
    if (decoder.HasFrame() && decoder.GetWidth() != lastWidth) {
      ++sizes;
      lastWidth = decoder.GetWidth();
    }
  }
  decoder.Drain();
  EXPECT_EQ(2, sizes);
  EXPECT_EQ(12, decoder.GetFrameCount());
  EXPECT_EQ(kNewWidth, decoder.GetWidth());
  EXPECT_EQ(kNewHeight, decoder.GetHeight());
  const DecoderStatistics_t statistics = decoder.GetStatistics();
  EXPECT_EQ(kNewWidth, statistics.width);
  EXPECT_EQ(kNewHeight, statistics.height);
  EXPECT_TRUE(CloseToCamera(decoder, FrameIndex(decoder.GetPts(), source.GetStreamInfo()) - 6,
                            kRate, "resized-in-stream"));
}
