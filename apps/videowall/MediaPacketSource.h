// MediaPacketSource: a file or an rtsp:// / http:// stream through the decoder library's
// CMediaSource.
//
// A file is played in a loop: at its end it is opened again, so a file that was removed
// meanwhile counts as a lost source. A network stream that ends is a lost source. Every open
// and read gives up after five seconds (CMediaSource's timeout), which is how a stalled camera
// is noticed. It does not pace, decode or retry.
#pragma once

#include <decompressor/CMediaSource.h>

#include "IPacketSource.h"

class MediaPacketSource : public IPacketSource {
 public:
  explicit MediaPacketSource(std::string location);

  // Whether `location` names a network stream rather than a file.
  static bool IsNetworkLocation(const std::string& location);

  int Open() override;
  void Close() override { m_source.Close(); }
  const VideoStreamInfo_t& StreamInfo() const override { return m_source.GetStreamInfo(); }
  int ReadPacket(MediaPacket_t& packet) override;
  bool IsPaced() const override { return !m_live; }
  std::string Location() const override { return m_location; }

 private:
  std::string m_location;
  bool m_live;
  CMediaSource m_source;
};
