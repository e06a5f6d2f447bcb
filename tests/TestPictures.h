// Pictures the decoder tests feed in: a grid of flat colour blocks (whose interiors survive any
// scaling unchanged) and reproducible noise (which shows every misplaced sample). Plain
// functions of the pixel position; they draw nothing themselves.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <decompressor/CDecompressor.h>
#include <decompressor/CSyntheticCamera.h>

#include "ColourReference.h"
#include "TestEncoder.h"
#include "TestFrame.h"

// Blocks: kBlockColumns x kBlockRows of distinct in-gamut colours over `width` x `height`.
constexpr int kBlockColumns = 4;
constexpr int kBlockRows = 3;
Rgb BlockColour(int x, int y, int width, int height);

// Distance in pixels from x (or y) to the nearest inner block edge along one axis.
double DistanceToBlockEdge(double position, int size, int blocks);

// A crop of a block picture of `sourceWidth` x `sourceHeight`, scaled to a target size.
struct BlockView {
  int sourceWidth;
  int sourceHeight;
  int x, y, width, height;  // source rectangle
  int targetWidth;
  int targetHeight;
};

// Every target pixel shows the colour of the block it maps to, within the tolerance of the
// conversion between the source's and the target's families; pixels whose filter footprint
// may reach into a neighbouring block are not compared.
::testing::AssertionResult BlocksShown(const TestFrame& target, const BlockView& view,
                                       bool rgbSource, const std::string& name);

// A reproducible pseudo-random byte for a position and a seed.
int Noise(int x, int y, int seed);

// Random limited-range YUV samples (Y 16..235, U and V 16..240).
Yuv NoiseYuv(int x, int y);
Rgb NoiseRgb(int x, int y);

// A frame of noise: NoiseRgb for the RGB formats, NoiseYuv for the others.
TestFrame NoiseFrame(int format, int width, int height, int padding = 0);

// Hands `frame` to `decoder` as a raw frame; the result of PutFrame.
int PutTestFrame(CDecompressor& decoder, TestFrame& frame, long long pts = 0);

// The camera's current picture, read from its planes.
TestFrame CameraFrame(const CSyntheticCamera& camera);

// Draws pictures 0 .. count - 1 of `camera` and encodes each at its index, then flushes.
bool EncodeCameraFrames(CSyntheticCamera& camera, TestEncoder& encoder, int count);

// The camera stream the codec and media-source tests encode: small, so the tests stay quick.
constexpr int kStreamWidth = 160;
constexpr int kStreamHeight = 120;
constexpr int kStreamRate = 25;

// A compressed stream of camera pictures and what a decoder needs to know of it.
struct EncodedStream {
  VideoStreamInfo_t info;
  std::vector<EncodedPacket> packets;
};

// `frames` pictures of a `width` x `height` camera at `rate`, encoded with `encoder`.
EncodedStream EncodeCamera(const char* encoder, int width, int height, int rate, int frames,
                           bool globalHeader = false);
EncodedStream EncodeCamera(const char* encoder, int width, int height, int rate, int frames,
                           const EncoderSettings& settings);

// `frames` camera pictures of kStreamWidth x kStreamHeight at kStreamRate, with a key frame
// every 10 pictures and no B-frames, so pictures come out in the order their packets go in
// (the damage and statistics tests count by packet); H.264 unless another encoder is named,
// with the picture hashes of EncoderSettings::pictureHash (libx265).
EncodedStream EncodeInOrderCamera(int frames, const char* encoder = "libx264", int pictureHash = 0,
                                  int width = kStreamWidth, int height = kStreamHeight);

// The decoder's latest picture is within kCodecMeanError of picture `index` of a camera of
// its size.
::testing::AssertionResult CloseToCamera(CDecompressor& decoder, long long index, int rate,
                                         const std::string& name);

// A decoder fed with noise frames that the test keeps as its expectations.
class DecoderFixture : public ::testing::Test {
 protected:
  const TestFrame& Load(int format, int width, int height, long long pts = 0);

  CDecompressor decoder;

 private:
  std::vector<std::unique_ptr<TestFrame>> m_frames;
};

// GetImage of the whole picture into `target`.
int GetWholeImage(CDecompressor& decoder, TestFrame& target);
