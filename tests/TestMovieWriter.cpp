// TestMovieWriter: one video stream muxed into a file.
#include "TestMovieWriter.h"

#include <algorithm>

void TestMovieWriter::OutputCloser::operator()(AVFormatContext* context) const {
  avio_closep(&context->pb);
  avformat_free_context(context);
}

TestMovieWriter::TestMovieWriter(const std::string& path, const TestEncoder& encoder)
    : m_encoder(encoder), m_packet(av_packet_alloc()) {
  if (!m_encoder.IsOpen() || !m_packet || !Open(path)) m_output.reset();
}

bool TestMovieWriter::Write(const EncodedPacket& packet) {
  if (!IsOpen()) return false;
  if (av_new_packet(m_packet.get(), static_cast<int>(packet.data.size())) < 0) return false;
  std::copy(packet.data.begin(), packet.data.end(), m_packet->data);
  m_packet->pts = packet.pts;
  m_packet->dts = packet.dts;
  m_packet->flags = packet.keyFrame ? AV_PKT_FLAG_KEY : 0;
  m_packet->stream_index = 0;
  av_packet_rescale_ts(m_packet.get(), m_encoder.Context().time_base,
                       m_output->streams[0]->time_base);
  return av_interleaved_write_frame(m_output.get(), m_packet.get()) >= 0;
}

bool TestMovieWriter::Finish() {
  if (!IsOpen()) return false;
  const bool written = av_write_trailer(m_output.get()) >= 0;
  m_output.reset();
  return written;
}

bool TestMovieWriter::Open(const std::string& path) {
  AVFormatContext* context = nullptr;
  if (avformat_alloc_output_context2(&context, nullptr, nullptr, path.c_str()) < 0) return false;
  m_output.reset(context);
  AVStream* stream = avformat_new_stream(context, nullptr);
  if (!stream || avcodec_parameters_from_context(stream->codecpar, &m_encoder.Context()) < 0) {
    return false;
  }
  stream->time_base = m_encoder.Context().time_base;
  return avio_open(&context->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0 &&
         avformat_write_header(context, nullptr) >= 0;
}
