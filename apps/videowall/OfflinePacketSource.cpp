// OfflinePacketSource: the stream of a camera that never opened.
#include "OfflinePacketSource.h"

const VideoStreamInfo_t& OfflinePacketSource::StreamInfo() const {
  static const VideoStreamInfo_t none;
  return none;
}
