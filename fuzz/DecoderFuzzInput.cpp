// DecoderFuzzInput: header and length-prefixed packets.
#include "DecoderFuzzInput.h"

#include <algorithm>
#include <iterator>

#include <decompressor/PixelFormat.h>

namespace {

constexpr const char* kCodecs[] = {"h264", "hevc", "mjpeg", "mpeg4"};

constexpr int kFormats[] = {PIXEL_FORMAT_I420,  PIXEL_FORMAT_YV12,  PIXEL_FORMAT_YUV422P,
                            PIXEL_FORMAT_NV12,  PIXEL_FORMAT_YUYV,  PIXEL_FORMAT_UYVY,
                            PIXEL_FORMAT_RGB24, PIXEL_FORMAT_BGR24, PIXEL_FORMAT_RGBA32};

constexpr size_t kMaxPacket = 0xFFFF;

}  // namespace

DecoderFuzzInput::DecoderFuzzInput(const uint8_t* data, size_t size)
    : m_data(data), m_size(size), m_hasHeader(size >= kHeaderBytes) {
  if (!m_hasHeader) return;
  m_header = Header{data[0], data[1], data[2], data[3], data[4], data[5], data[6], data[7]};
}

const char* DecoderFuzzInput::Codec() const { return Codec(m_header.flags & 3); }

const char* DecoderFuzzInput::Codec(int index) { return kCodecs[index & 3]; }

int DecoderFuzzInput::TargetFormat() const {
  return kFormats[m_header.format % std::size(kFormats)];
}

bool DecoderFuzzInput::Next(Packet& packet) {
  if (!m_hasHeader || m_offset + 2 > m_size) return false;
  const size_t length = m_data[m_offset] | (m_data[m_offset + 1] << 8);
  m_offset += 2;
  packet.data = m_data + m_offset;
  packet.size = static_cast<int>(std::min(length, m_size - m_offset));
  m_offset += static_cast<size_t>(packet.size);
  return true;
}

std::vector<uint8_t> DecoderFuzzInput::Compose(const Header& header,
                                               const std::vector<std::vector<uint8_t>>& packets) {
  std::vector<uint8_t> out = {header.flags,  header.format,   header.width,   header.height,
                              header.cropAt, header.cropSize, header.padding, header.zoom};
  for (const std::vector<uint8_t>& packet : packets) {
    const size_t length = std::min(packet.size(), kMaxPacket);
    out.push_back(static_cast<uint8_t>(length & 0xFF));
    out.push_back(static_cast<uint8_t>(length >> 8));
    out.insert(out.end(), packet.begin(), packet.begin() + static_cast<std::ptrdiff_t>(length));
  }
  return out;
}
