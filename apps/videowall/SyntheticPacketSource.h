// SyntheticPacketSource: a synthetic camera as a never-ending H.264 stream: the shared
// SyntheticStream of its size played in a loop, with timestamps that keep rising.
//
// `phase` starts the loop at another picture, so tiles of one size do not all show the same
// moment. It never fails once open, and it does not pace itself (the worker does).
#pragma once

#include <memory>

#include "IPacketSource.h"
#include "SyntheticStream.h"

class SyntheticPacketSource : public IPacketSource {
 public:
  SyntheticPacketSource(int width, int height, int phase);

  int Open() override;
  void Close() override { m_stream.reset(); }
  const VideoStreamInfo_t& StreamInfo() const override;
  int ReadPacket(MediaPacket_t& packet) override;
  bool IsPaced() const override { return true; }
  std::string Location() const override;

 private:
  int m_width;
  int m_height;
  int m_phase;
  std::shared_ptr<const SyntheticStream> m_stream;
  long long m_next = 0;
};
