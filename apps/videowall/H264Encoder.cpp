// H264Encoder: x264 through libavcodec, low latency, in-band headers.
#include "H264Encoder.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
}

H264Encoder::H264Encoder(int width, int height, int framesPerSecond)
    : m_picture(av_frame_alloc()), m_packet(av_packet_alloc()) {
  if (!m_picture || !m_packet || !Open(width, height, framesPerSecond)) m_codec.reset();
}

bool H264Encoder::Open(int width, int height, int framesPerSecond) {
  const AVCodec* x264 = avcodec_find_encoder_by_name("libx264");
  if (!x264) return false;
  m_codec.reset(avcodec_alloc_context3(x264));
  if (!m_codec) return false;
  AVCodecContext& codec = *m_codec;
  codec.width = width;
  codec.height = height;
  codec.pix_fmt = AV_PIX_FMT_YUV420P;
  codec.time_base = AVRational{1, framesPerSecond};
  codec.framerate = AVRational{framesPerSecond, 1};
  codec.gop_size = framesPerSecond;
  codec.max_b_frames = 0;
  codec.thread_count = 1;
  av_opt_set(codec.priv_data, "preset", "veryfast", 0);
  av_opt_set(codec.priv_data, "tune", "zerolatency", 0);
  av_opt_set(codec.priv_data, "crf", "20", 0);
  if (avcodec_open2(&codec, x264, nullptr) < 0) return false;
  m_picture->format = codec.pix_fmt;
  m_picture->width = width;
  m_picture->height = height;
  return av_frame_get_buffer(m_picture.get(), 0) >= 0;
}

bool H264Encoder::Encode(const unsigned char* const* planes, const int* pitches, long long index,
                         std::vector<MediaPacket_t>& out) {
  if (!IsOpen() || av_frame_make_writable(m_picture.get()) < 0) return false;
  av_image_copy(m_picture->data, m_picture->linesize, const_cast<const uint8_t**>(planes), pitches,
                AV_PIX_FMT_YUV420P, m_picture->width, m_picture->height);
  m_picture->pts = index;
  return avcodec_send_frame(m_codec.get(), m_picture.get()) >= 0 && Drain(out);
}

bool H264Encoder::Flush(std::vector<MediaPacket_t>& out) {
  return IsOpen() && avcodec_send_frame(m_codec.get(), nullptr) >= 0 && Drain(out);
}

bool H264Encoder::Drain(std::vector<MediaPacket_t>& out) {
  for (;;) {
    const int received = avcodec_receive_packet(m_codec.get(), m_packet.get());
    if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) return true;
    if (received < 0) return false;
    MediaPacket_t& packet = out.emplace_back();
    packet.data.assign(m_packet->data, m_packet->data + m_packet->size);
    packet.pts = m_packet->pts;
    packet.keyFrame = (m_packet->flags & AV_PKT_FLAG_KEY) != 0;
    av_packet_unref(m_packet.get());
  }
}

VideoStreamInfo_t H264Encoder::StreamInfo() const {
  VideoStreamInfo_t info;
  info.codec = "h264";
  info.width = m_codec->width;
  info.height = m_codec->height;
  info.timeBaseNum = m_codec->time_base.num;
  info.timeBaseDen = m_codec->time_base.den;
  return info;
}
