// SyntheticStream: two seconds of a synthetic camera (colour bars, the sweeping box, the
// clock) encoded to H.264 once per picture size, shared read-only by every tile that plays
// that size.
//
// The two seconds are one full sweep of the box, so the packets loop without a jump. Encoding
// happens on the first request for a size, on the requesting (worker) thread; later requests
// get the same stream. It does not decode, pace or loop by itself (SyntheticPacketSource does).
#pragma once

#include <memory>
#include <vector>

#include <decompressor/DecompressorTypes.h>

class SyntheticStream {
 public:
  static constexpr int kFrameRate = 25;
  static constexpr int kSeconds = 2;

  // The stream for this size, encoded on first use; null when no H.264 encoder is available.
  static std::shared_ptr<const SyntheticStream> ForSize(int width, int height);

  const VideoStreamInfo_t& Info() const { return m_info; }
  const std::vector<MediaPacket_t>& Packets() const { return m_packets; }
  // Picture ticks (in the stream's time base) that one pass of the packets covers.
  long long Duration() const { return static_cast<long long>(kFrameRate) * kSeconds; }

 private:
  static std::shared_ptr<const SyntheticStream> Encode(int width, int height);

  VideoStreamInfo_t m_info;
  std::vector<MediaPacket_t> m_packets;
};
