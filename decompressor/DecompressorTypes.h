// Result codes and plain records that the decoder and the media sources exchange with a host.
//
// These carry no FFmpeg types, so a host includes them without the codec headers; they hold
// no behaviour. Failures are reported through the negative codes below, never by exceptions.
#pragma once

#include <string>
#include <vector>

enum : int {
  DECOMP_OK = 0,
  DECOMP_END_OF_STREAM = 1,  // a media source has no further packets

  DECOMP_ERROR_ARGUMENT = -1,       // a null pointer, a size below 1, an unknown format, ...
  DECOMP_ERROR_NO_FRAME = -2,       // no picture has been decoded or handed in yet
  DECOMP_ERROR_NOT_OPEN = -3,       // compressed data arrived before a stream was opened
  DECOMP_ERROR_UNKNOWN_CODEC = -4,  // no decoder for the named codec
  DECOMP_ERROR_CORRUPT_DATA = -5,   // data rejected, or a damaged picture dropped
  DECOMP_ERROR_UNSUPPORTED = -6,    // a request this decoder cannot serve (hardware images, ...)
  DECOMP_ERROR_OPEN_FAILED = -7,    // a media source could not be opened or has no video
  DECOMP_ERROR_IO = -8,             // reading from a media source failed
  DECOMP_ERROR_TIMEOUT = -9,        // a media source did not answer in time
  DECOMP_ERROR_INTERNAL = -10,      // the codec library failed (out of memory, ...)
};

// The matrix between a picture's YUV samples and RGB. kFromStream is only an override's "no
// override"; a picture's resolved colour is always one of the three matrices.
enum class ColourMatrix : int { kFromStream = 0, kBt601, kBt709, kBt2020 };

// The span of a picture's YUV samples: limited (Y 16..235, U and V 16..240) or full (0..255).
// kFromStream as for ColourMatrix.
enum class ColourRange : int { kFromStream = 0, kLimited, kFull };

// How a picture's YUV samples are to be read.
struct ColourSpace_t {
  ColourMatrix matrix = ColourMatrix::kFromStream;
  ColourRange range = ColourRange::kFromStream;
  bool operator==(const ColourSpace_t& other) const {
    return matrix == other.matrix && range == other.range;
  }
};

// What a decoder does with a picture the codec reports as damaged, and with the pictures
// predicted from it until the next key frame.
enum class DamagePolicy : int {
  kConceal = 0,  // show it as libavcodec's error concealment repaired it
  kDrop,         // do not show it; the last good picture stays
};

// A decoder's health at a glance, for a host's overlay and watchdog; cheap to read every paint.
struct DecoderStatistics_t {
  // Pictures since construction: completed by the codec (good or damaged); damaged (flagged by
  // the codec or by an H.265 picture hash, predicted from a damaged one until the next key
  // frame, or lost in data the codec rejected); dropped (damaged and not shown, under
  // DamagePolicy::kDrop or lost).
  long long picturesDecoded = 0;
  long long picturesDamaged = 0;
  long long picturesDropped = 0;
  // Over the last two seconds of stream time (packet timestamps): pictures taken in per second
  // and compressed bits per second; 0 until two timestamps lie apart.
  double framesPerSecond = 0;
  double bitsPerSecond = 0;
  // Wall-clock seconds since the latest picture was taken in (decoded or raw); -1 before the
  // first. A watchdog compares it with the stream's frame interval.
  double latestPictureAge = -1;
  // The open stream's codec as libavcodec names it ("h264", ...; "" while none is open; a
  // string with static lifetime), the latest picture's size (0 x 0 before the first) and how
  // its samples are read (CDecompressor::GetSourceColour).
  const char* codec = "";
  int width = 0;
  int height = 0;
  ColourSpace_t colour;
};

// One compressed video stream as a decoder needs to know it.
struct VideoStreamInfo_t {
  // Codec as libavcodec names it: "h264", "hevc", "mjpeg", "mpeg4", ...
  std::string codec;
  // Out-of-band headers (avcC, hvcC, the MPEG-4 configuration); empty when they travel in-band.
  std::vector<unsigned char> extradata;
  // Picture size the container declares; 0 when it does not say.
  int width = 0;
  int height = 0;
  // The unit of packet timestamps, in seconds: timeBaseNum / timeBaseDen.
  int timeBaseNum = 1;
  int timeBaseDen = 90000;
};

// One compressed packet of a video stream. Hosts keep one and let a source refill it, so its
// storage is reused from packet to packet.
struct MediaPacket_t {
  std::vector<unsigned char> data;
  long long pts = 0;  // presentation time in the stream's time base
  bool keyFrame = false;
};
