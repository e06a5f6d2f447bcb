// OfflinePacketSource: a camera that cannot be reached: every attempt to open it fails, as for
// a camera that is switched off or cut from the network. The soak run puts it in a tile to
// kill the tile's source, and the tile's worker then shows "No signal" and keeps trying.
//
// It never delivers a packet and never blocks.
#pragma once

#include "IPacketSource.h"

class OfflinePacketSource : public IPacketSource {
 public:
  int Open() override { return DECOMP_ERROR_OPEN_FAILED; }
  void Close() override {}
  const VideoStreamInfo_t& StreamInfo() const override;
  int ReadPacket(MediaPacket_t&) override { return DECOMP_ERROR_NOT_OPEN; }
  bool IsPaced() const override { return false; }
  std::string Location() const override { return "offline camera"; }
};
