// CMediaSource: libavformat input with a deadline on every blocking call.
#include "CMediaSource.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

bool IsRtsp(const std::string& location) { return location.rfind("rtsp://", 0) == 0; }

}  // namespace

void CMediaSource::FormatCloser::operator()(AVFormatContext* context) const {
  avformat_close_input(&context);
}

void CMediaSource::PacketFreer::operator()(AVPacket* packet) const { av_packet_free(&packet); }

CMediaSource::CMediaSource() : m_packet(av_packet_alloc()) {}

CMediaSource::~CMediaSource() = default;

int CMediaSource::Open(const std::string& location, int timeoutMs) {
  Close();
  if (!m_packet) return DECOMP_ERROR_INTERNAL;
  m_timeout = std::chrono::milliseconds(timeoutMs);
  int result = OpenInput(location);
  if (result == DECOMP_OK) result = DescribeVideoStream();
  if (result != DECOMP_OK) Close();
  return result;
}

void CMediaSource::Close() {
  m_format.reset();
  m_info = VideoStreamInfo_t{};
  m_stream = -1;
}

int CMediaSource::ReadPacket(MediaPacket_t& packet) {
  if (!IsOpen()) return DECOMP_ERROR_NOT_OPEN;
  for (;;) {
    StartWaiting();
    const int read = av_read_frame(m_format.get(), m_packet.get());
    if (read == AVERROR_EOF) return DECOMP_END_OF_STREAM;
    if (read < 0) return HasTimedOut(read) ? DECOMP_ERROR_TIMEOUT : DECOMP_ERROR_IO;
    const bool ours = m_packet->stream_index == m_stream;
    if (ours) CopyPacket(packet);
    av_packet_unref(m_packet.get());
    if (ours) return DECOMP_OK;
  }
}

int CMediaSource::Interrupt(void* self) {
  const auto* source = static_cast<const CMediaSource*>(self);
  return std::chrono::steady_clock::now() > source->m_deadline ? 1 : 0;
}

void CMediaSource::StartWaiting() { m_deadline = std::chrono::steady_clock::now() + m_timeout; }

// libavformat answers AVERROR_EXIT when our interrupt callback stopped it, but some protocols
// (RTSP) turn that into errors of their own; a failure past the deadline is a timeout too.
bool CMediaSource::HasTimedOut(int error) const {
  return error == AVERROR_EXIT || std::chrono::steady_clock::now() > m_deadline;
}

int CMediaSource::OpenFailure(int error) const {
  return HasTimedOut(error) ? DECOMP_ERROR_TIMEOUT : DECOMP_ERROR_OPEN_FAILED;
}

int CMediaSource::OpenInput(const std::string& location) {
  AVFormatContext* context = avformat_alloc_context();
  if (!context) return DECOMP_ERROR_INTERNAL;
  context->interrupt_callback = AVIOInterruptCB{&CMediaSource::Interrupt, this};
  AVDictionary* options = nullptr;
  if (IsRtsp(location)) av_dict_set(&options, "rtsp_transport", "tcp", 0);
  StartWaiting();
  // On failure libavformat frees the context itself.
  const int opened = avformat_open_input(&context, location.c_str(), nullptr, &options);
  av_dict_free(&options);
  if (opened < 0) return OpenFailure(opened);
  m_format.reset(context);
  StartWaiting();
  const int probed = avformat_find_stream_info(context, nullptr);
  return probed < 0 ? OpenFailure(probed) : DECOMP_OK;
}

int CMediaSource::DescribeVideoStream() {
  m_stream = av_find_best_stream(m_format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (m_stream < 0) return DECOMP_ERROR_OPEN_FAILED;
  const AVStream& stream = *m_format->streams[m_stream];
  const AVCodecParameters& parameters = *stream.codecpar;
  m_info.codec = avcodec_get_name(parameters.codec_id);
  m_info.extradata.assign(parameters.extradata, parameters.extradata + parameters.extradata_size);
  m_info.width = parameters.width;
  m_info.height = parameters.height;
  m_info.timeBaseNum = stream.time_base.num;
  m_info.timeBaseDen = stream.time_base.den;
  return DECOMP_OK;
}

// The packet's bytes and timing; without a presentation time the decoding time stands in.
void CMediaSource::CopyPacket(MediaPacket_t& packet) const {
  const AVPacket& source = *m_packet;
  packet.data.assign(source.data, source.data + source.size);
  packet.pts = source.pts != AV_NOPTS_VALUE ? source.pts : source.dts;
  packet.keyFrame = (source.flags & AV_PKT_FLAG_KEY) != 0;
}
