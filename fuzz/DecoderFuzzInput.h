// DecoderFuzzInput: the decoder harness's input, read as a stream and what to do with it.
//
// Layout: a header of kHeaderBytes, then packets, each a 16-bit little-endian length and that
// many bytes (the last one cut where the input ends). The header picks the codec, whether the
// first packet is out-of-band extradata, the damage policy, whether the stream is drained at
// its end, and the output GetImage is asked for: pixel format, size, crop, pitch padding and
// a digital zoom. Compose writes the same layout, so the seed writer and the harness cannot
// disagree. It neither decodes nor allocates frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class DecoderFuzzInput {
 public:
  static constexpr size_t kHeaderBytes = 8;

  struct Header {
    uint8_t flags = 0;     // bits 0-1 codec, 2 extradata, 3 drop damage, 4 drain
    uint8_t format = 0;    // index into the pixel formats, modulo their count
    uint8_t width = 63;    // target width - 1
    uint8_t height = 47;   // target height - 1
    uint8_t cropAt = 0;    // crop origin in sixteenths of the picture: x low, y high nibble
    uint8_t cropSize = 0;  // crop size in sixteenths, 0 = the rest of the picture
    uint8_t padding = 0;   // extra bytes of pitch on every plane
    uint8_t zoom = 0;      // digital zoom 1 + zoom / 16 about the crop origin; 0 = none
  };

  struct Packet {
    const uint8_t* data = nullptr;
    int size = 0;
  };

  enum Flag : uint8_t { kExtradata = 1 << 2, kDropDamage = 1 << 3, kDrain = 1 << 4 };

  DecoderFuzzInput(const uint8_t* data, size_t size);

  bool HasHeader() const { return m_hasHeader; }
  const Header& GetHeader() const { return m_header; }

  // The codec name CDecompressor::Open takes: "h264", "hevc", "mjpeg" or "mpeg4".
  const char* Codec() const;
  static const char* Codec(int index);
  // The pixel-format code asked of GetImage.
  int TargetFormat() const;

  // The next packet; false at the end of the input.
  bool Next(Packet& packet);

  // Header and packets in the layout above.
  static std::vector<uint8_t> Compose(const Header& header,
                                      const std::vector<std::vector<uint8_t>>& packets);

 private:
  const uint8_t* m_data;
  size_t m_size;
  size_t m_offset = kHeaderBytes;
  bool m_hasHeader;
  Header m_header;
};
