// SyntheticPacketSource: the shared packets in a loop.
#include "SyntheticPacketSource.h"

SyntheticPacketSource::SyntheticPacketSource(int width, int height, int phase)
    : m_width(width), m_height(height), m_phase(phase) {}

int SyntheticPacketSource::Open() {
  m_stream = SyntheticStream::ForSize(m_width, m_height);
  if (!m_stream || m_stream->Packets().empty()) return DECOMP_ERROR_UNKNOWN_CODEC;
  // Start on a key frame at or before the phase, so the first picture decodes.
  const long long count = static_cast<long long>(m_stream->Packets().size());
  m_next = m_phase % count;
  while (m_next > 0 && !m_stream->Packets()[m_next].keyFrame) --m_next;
  return DECOMP_OK;
}

const VideoStreamInfo_t& SyntheticPacketSource::StreamInfo() const {
  static const VideoStreamInfo_t none;
  return m_stream ? m_stream->Info() : none;
}

int SyntheticPacketSource::ReadPacket(MediaPacket_t& packet) {
  if (!m_stream) return DECOMP_ERROR_NOT_OPEN;
  const std::vector<MediaPacket_t>& packets = m_stream->Packets();
  const long long count = static_cast<long long>(packets.size());
  const MediaPacket_t& next = packets[m_next % count];
  packet.data = next.data;
  packet.keyFrame = next.keyFrame;
  packet.pts = next.pts + (m_next / count) * m_stream->Duration();
  ++m_next;
  return DECOMP_OK;
}

std::string SyntheticPacketSource::Location() const {
  return "synthetic " + std::to_string(m_width) + "x" + std::to_string(m_height);
}
