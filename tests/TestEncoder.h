// TestEncoder: compressed streams for the decoder tests, made with libavcodec's encoders.
//
// It takes I420 pictures laid out as the frame-buffer table says (as CSyntheticCamera draws
// them), converts them to the encoder's input format (full-range YUV for MJPEG, as IP cameras
// send it, unless the pictures are tagged full range already) and collects the packets. With global
// headers the codec configuration goes to extradata, as MP4 and Matroska want it; otherwise it
// travels in-band with every key frame. Settings can pick the encoder's input format, tag the
// stream's colour (the samples pass through as given: the encoder does not convert them), make it
// lossless, leave out B-frames and add picture hashes. It does not write files (TestMovieWriter
// does) and does not decode.
#pragma once

#include <string>
#include <vector>

#include <decompressor/AvHandles.h>
#include <decompressor/DecompressorTypes.h>

struct EncodedPacket {
  std::vector<unsigned char> data;
  long long pts = 0;
  long long dts = 0;
  bool keyFrame = false;
};

struct EncoderSettings {
  bool globalHeader = false;
  bool lossless = false;  // libx264 and libx265; the finest quantiser for the others
  bool bFrames = true;    // false: pictures come out in decoding order
  int pictureHash = 0;    // libx265 only: 1 MD5, 2 CRC, 3 checksum of every picture
  AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  // The encoder's input format (4:2:2, 4:4:4, grey, ...); NONE: the codec's usual one.
  AVPixelFormat pixelFormat = AV_PIX_FMT_NONE;
};

class TestEncoder {
 public:
  // `encoder` is a libavcodec encoder name: "mpeg4", "mjpeg", "libx264", "libx265".
  TestEncoder(const std::string& encoder, int width, int height, int rate,
              bool globalHeader = false);
  TestEncoder(const std::string& encoder, int width, int height, int rate,
              const EncoderSettings& settings);

  bool IsOpen() const { return m_context != nullptr; }

  // Encodes one picture shown at `pts` (in frames); finished packets go to Packets().
  bool Encode(unsigned char* const* planes, const int* pitches, long long pts);
  // Flushes the packets the encoder still holds.
  bool Finish();

  const std::vector<EncodedPacket>& Packets() const { return m_packets; }
  const AVCodecContext& Context() const { return *m_context; }

  // What a decoder needs to know: codec name, extradata, size and time base.
  VideoStreamInfo_t StreamInfo() const;

 private:
  bool Open(const AVCodec& codec, int width, int height, int rate, const EncoderSettings& settings);
  bool Convert(unsigned char* const* planes, const int* pitches);
  bool Send(const AVFrame* frame);

  AvCodecContextPtr m_context;
  SwsContextPtr m_converter;
  AvFramePtr m_input;
  AvPacketPtr m_packet;
  std::vector<EncodedPacket> m_packets;
};
