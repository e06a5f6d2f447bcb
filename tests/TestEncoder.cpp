// TestEncoder: I420 in, converted to the encoder's input, packets out.
#include "TestEncoder.h"

#include <string>

extern "C" {
#include <libavutil/opt.h>
}

namespace {

AVPixelFormat InputFormat(const AVCodec& codec, const EncoderSettings& settings) {
  if (settings.pixelFormat != AV_PIX_FMT_NONE) return settings.pixelFormat;
  return codec.id == AV_CODEC_ID_MJPEG ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P;
}

// What the given pictures hold: limited range, except pictures for MJPEG tagged full range,
// which pass through as they are.
AVPixelFormat GivenFormat(const AVCodec& codec, const EncoderSettings& settings) {
  const bool fullRange = codec.id == AV_CODEC_ID_MJPEG && settings.range == AVCOL_RANGE_JPEG;
  return fullRange ? AV_PIX_FMT_YUVJ420P : AV_PIX_FMT_YUV420P;
}

// High quality settings, so decoded pictures stay close to what went in; lossless and with
// picture hashes where asked.
void SetQuality(const AVCodec& codec, const EncoderSettings& settings, AVCodecContext& context) {
  switch (codec.id) {
    case AV_CODEC_ID_H264:
      av_opt_set(context.priv_data, "preset", "veryfast", 0);
      av_opt_set(context.priv_data, settings.lossless ? "qp" : "crf",
                 settings.lossless ? "0" : "18", 0);
      break;
    case AV_CODEC_ID_HEVC: {
      av_opt_set(context.priv_data, "preset", "ultrafast", 0);
      av_opt_set(context.priv_data, "crf", "18", 0);
      std::string parameters = "log-level=none";
      if (settings.lossless) parameters += ":lossless=1";
      if (settings.pictureHash > 0) parameters += ":hash=" + std::to_string(settings.pictureHash);
      av_opt_set(context.priv_data, "x265-params", parameters.c_str(), 0);
      break;
    }
    default:
      context.flags |= AV_CODEC_FLAG_QSCALE;
      context.global_quality = FF_QP2LAMBDA * (settings.lossless ? 1 : 2);
      break;
  }
}

}  // namespace

TestEncoder::TestEncoder(const std::string& encoder, int width, int height, int rate,
                         bool globalHeader)
    : TestEncoder(encoder, width, height, rate, EncoderSettings{globalHeader}) {}

TestEncoder::TestEncoder(const std::string& encoder, int width, int height, int rate,
                         const EncoderSettings& settings)
    : m_input(av_frame_alloc()), m_packet(av_packet_alloc()) {
  const AVCodec* codec = avcodec_find_encoder_by_name(encoder.c_str());
  if (codec && m_input && m_packet && !Open(*codec, width, height, rate, settings)) {
    m_context.reset();
  }
}

bool TestEncoder::Encode(unsigned char* const* planes, const int* pitches, long long pts) {
  if (!IsOpen() || !Convert(planes, pitches)) return false;
  m_input->pts = pts;
  return Send(m_input.get());
}

bool TestEncoder::Finish() { return IsOpen() && Send(nullptr); }

VideoStreamInfo_t TestEncoder::StreamInfo() const {
  VideoStreamInfo_t info;
  info.codec = avcodec_get_name(m_context->codec_id);
  info.extradata.assign(m_context->extradata, m_context->extradata + m_context->extradata_size);
  info.width = m_context->width;
  info.height = m_context->height;
  info.timeBaseNum = m_context->time_base.num;
  info.timeBaseDen = m_context->time_base.den;
  return info;
}

bool TestEncoder::Open(const AVCodec& codec, int width, int height, int rate,
                       const EncoderSettings& settings) {
  m_context.reset(avcodec_alloc_context3(&codec));
  if (!m_context) return false;
  m_context->width = width;
  m_context->height = height;
  m_context->pix_fmt = InputFormat(codec, settings);
  m_context->time_base = AVRational{1, rate};
  m_context->framerate = AVRational{rate, 1};
  m_context->gop_size = 10;
  m_context->max_b_frames = codec.id == AV_CODEC_ID_MPEG4 ? 2 : m_context->max_b_frames;
  if (!settings.bFrames) m_context->max_b_frames = 0;
  m_context->thread_count = 1;
  m_context->colorspace = settings.matrix;
  m_context->color_range = settings.range;
  if (settings.globalHeader) m_context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  SetQuality(codec, settings, *m_context);
  if (avcodec_open2(m_context.get(), &codec, nullptr) < 0) return false;
  m_input->format = m_context->pix_fmt;
  m_input->width = width;
  m_input->height = height;
  m_converter.reset(sws_getContext(width, height, GivenFormat(codec, settings), width, height,
                                   m_context->pix_fmt, SWS_BILINEAR, nullptr, nullptr, nullptr));
  return m_converter && av_frame_get_buffer(m_input.get(), 0) >= 0;
}

bool TestEncoder::Convert(unsigned char* const* planes, const int* pitches) {
  if (av_frame_make_writable(m_input.get()) < 0) return false;
  const uint8_t* const source[4] = {planes[0], planes[1], planes[2], nullptr};
  const int strides[4] = {pitches[0], pitches[1], pitches[2], 0};
  return sws_scale(m_converter.get(), source, strides, 0, m_input->height, m_input->data,
                   m_input->linesize) == m_input->height;
}

bool TestEncoder::Send(const AVFrame* frame) {
  if (avcodec_send_frame(m_context.get(), frame) < 0) return false;
  while (avcodec_receive_packet(m_context.get(), m_packet.get()) == 0) {
    EncodedPacket packet;
    packet.data.assign(m_packet->data, m_packet->data + m_packet->size);
    packet.pts = m_packet->pts;
    packet.dts = m_packet->dts;
    packet.keyFrame = (m_packet->flags & AV_PKT_FLAG_KEY) != 0;
    m_packets.push_back(std::move(packet));
    av_packet_unref(m_packet.get());
  }
  return true;
}
