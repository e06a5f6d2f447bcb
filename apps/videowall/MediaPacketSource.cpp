// MediaPacketSource: files loop, streams end.
#include "MediaPacketSource.h"

MediaPacketSource::MediaPacketSource(std::string location)
    : m_location(std::move(location)), m_live(IsNetworkLocation(m_location)) {}

bool MediaPacketSource::IsNetworkLocation(const std::string& location) {
  const size_t scheme = location.find("://");
  return scheme != std::string::npos && location.compare(0, scheme, "file") != 0;
}

int MediaPacketSource::Open() { return m_source.Open(m_location); }

int MediaPacketSource::ReadPacket(MediaPacket_t& packet) {
  const int result = m_source.ReadPacket(packet);
  if (result != DECOMP_END_OF_STREAM || m_live) return result;
  const int reopened = Open();
  return reopened == DECOMP_OK ? m_source.ReadPacket(packet) : reopened;
}
