// H264Encoder: turns I420 pictures into an H.264 stream in memory with libavcodec's x264, the
// way a camera would send it: no B-frames, a key frame every second, parameter sets in-band.
//
// The wall uses it to give its synthetic cameras real compressed video, so that the default
// run decodes with the real decoder. It writes no files, does not decode and converts no
// pixel formats (the pictures must be I420 of the encoder's size).
#pragma once

#include <vector>

#include <decompressor/AvHandles.h>
#include <decompressor/DecompressorTypes.h>

class H264Encoder {
 public:
  H264Encoder(int width, int height, int framesPerSecond);

  // False when the encoder could not be opened (no x264 in this libavcodec).
  bool IsOpen() const { return m_codec != nullptr; }

  // Encodes picture number `index`; finished packets are appended to `out`.
  bool Encode(const unsigned char* const* planes, const int* pitches, long long index,
              std::vector<MediaPacket_t>& out);
  // Collects what the encoder still holds.
  bool Flush(std::vector<MediaPacket_t>& out);

  // Codec name, size and time base (one tick per picture); no extradata.
  VideoStreamInfo_t StreamInfo() const;

 private:
  bool Open(int width, int height, int framesPerSecond);
  bool Drain(std::vector<MediaPacket_t>& out);

  AvCodecContextPtr m_codec;
  AvFramePtr m_picture;
  AvPacketPtr m_packet;
};
