// CCodecSession: send/receive on libavcodec, damaged pictures counted and shown or dropped.
#include "CCodecSession.h"

#include <cstring>
#include <string>

#include "CPictureStore.h"
#include "CPixelLayout.h"
#include "DecompressorTypes.h"

namespace {

const AVCodec* FindDecoder(const std::string& name) {
  const AVCodecDescriptor* descriptor =
      avcodec_descriptor_get_by_name(name == "h265" ? "hevc" : name.c_str());
  if (!descriptor || descriptor->type != AVMEDIA_TYPE_VIDEO) return nullptr;
  return avcodec_find_decoder(descriptor->id);
}

bool IsDamaged(const AVFrame& frame) {
  return frame.decode_error_flags != 0 || (frame.flags & AV_FRAME_FLAG_CORRUPT);
}

// Beyond the library's largest picture (CPixelLayout::kMaxDimension a side). Only a broken or
// hostile stream declares one (a fuzzed H.264 header asked for 3712 x 16480); shown, it would
// make every GetImage convert hundreds of megabytes.
bool IsOversized(const AVFrame& frame) {
  return frame.width > CPixelLayout::kMaxDimension || frame.height > CPixelLayout::kMaxDimension;
}

// Out-of-band headers in a zero-padded buffer that the codec context owns and frees.
bool CopyExtradata(const std::vector<unsigned char>& extradata, AVCodecContext& context) {
  if (extradata.empty()) return true;
  const size_t size = extradata.size();
  context.extradata = static_cast<uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
  if (!context.extradata) return false;
  std::memcpy(context.extradata, extradata.data(), size);
  context.extradata_size = static_cast<int>(size);
  return true;
}

}  // namespace

// A picture the codec could not complete: damaged, not shown, and what follows is predicted
// from damage.
void CCodecSession::CountLost() {
  ++m_counts.damaged;
  ++m_counts.dropped;
  m_predictedFromDamage = true;
}

// Counts the picture and tells whether the policy shows it. Damage carries over to every
// picture until a key frame that is itself undamaged.
bool CCodecSession::IsShown(const AVFrame& picture) {
  ++m_counts.decoded;
  const bool flagged = IsDamaged(picture);
  if (flagged || picture.key_frame) m_predictedFromDamage = flagged;
  const bool damaged = flagged || m_predictedFromDamage;
  if (!damaged) return true;
  ++m_counts.damaged;
  if (m_policy == DamagePolicy::kConceal) return true;
  ++m_counts.dropped;
  return false;
}

// MJPEG is full range by the JPEG convention, whether or not the decoder says so.
void CCodecSession::MarkJpegRange(AVFrame& picture) const {
  if (m_context->codec_id == AV_CODEC_ID_MJPEG && picture.color_range == AVCOL_RANGE_UNSPECIFIED) {
    picture.color_range = AVCOL_RANGE_JPEG;
  }
}

CCodecSession::CCodecSession() : m_packet(av_packet_alloc()), m_received(av_frame_alloc()) {}

CCodecSession::~CCodecSession() = default;

int CCodecSession::Open(const VideoStreamInfo_t& stream, DamagePolicy policy) {
  m_context.reset();
  const AVCodec* codec = FindDecoder(stream.codec);
  if (!codec) return DECOMP_ERROR_UNKNOWN_CODEC;
  AvCodecContextPtr context(avcodec_alloc_context3(codec));
  if (!context || !m_packet || !m_received) return DECOMP_ERROR_INTERNAL;
  context->thread_count = 1;
  // libavcodec refuses to allocate larger pictures (a corrupt header would otherwise cost
  // gigabytes of reference frames); those that fit in the area but not a side are refused
  // when they come out (IsOversized).
  context->max_pixels =
      static_cast<int64_t>(CPixelLayout::kMaxDimension) * CPixelLayout::kMaxDimension;
  if (policy == DamagePolicy::kDrop) context->err_recognition |= AV_EF_EXPLODE;
  context->width = stream.width;
  context->height = stream.height;
  if (stream.timeBaseNum > 0 && stream.timeBaseDen > 0) {
    context->pkt_timebase = AVRational{stream.timeBaseNum, stream.timeBaseDen};
  }
  if (!CopyExtradata(stream.extradata, *context)) return DECOMP_ERROR_INTERNAL;
  if (avcodec_open2(context.get(), codec, nullptr) < 0) return DECOMP_ERROR_INTERNAL;
  m_context = std::move(context);
  m_policy = policy;
  m_predictedFromDamage = false;
  return DECOMP_OK;
}

const char* CCodecSession::GetCodecName() const {
  return m_context ? avcodec_get_name(m_context->codec_id) : "";
}

int CCodecSession::Decode(const unsigned char* data, int size, long long pts,
                          CPictureStore& store) {
  // The packet borrows the caller's bytes; libavcodec copies them into a padded buffer of its
  // own before it reads them.
  m_packet->data = const_cast<unsigned char*>(data);
  m_packet->size = size;
  m_packet->pts = pts;
  const int result = Send(m_packet.get(), store);
  av_packet_unref(m_packet.get());
  return result;
}

int CCodecSession::Drain(CPictureStore& store) {
  const int result = Send(nullptr, store);
  avcodec_flush_buffers(m_context.get());
  return result;
}

// Every call reads all the codec's output, so the codec never turns a packet away for want
// of reading (EAGAIN); any refusal is about the data.
int CCodecSession::Send(const AVPacket* packet, CPictureStore& store) {
  const int sent = avcodec_send_packet(m_context.get(), packet);
  bool dropped = false;
  const int pictures = Receive(store, dropped);
  if (pictures < 0) return pictures;
  if (sent == AVERROR(ENOMEM)) return DECOMP_ERROR_INTERNAL;
  if (sent < 0) {
    CountLost();
    return DECOMP_ERROR_CORRUPT_DATA;
  }
  return dropped ? DECOMP_ERROR_CORRUPT_DATA : pictures;
}

int CCodecSession::Receive(CPictureStore& store, bool& dropped) {
  int pictures = 0;
  for (;;) {
    const int received = avcodec_receive_frame(m_context.get(), m_received.get());
    if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) return pictures;
    if (received == AVERROR(ENOMEM)) return DECOMP_ERROR_INTERNAL;
    if (received < 0) {
      CountLost();
      dropped = true;
      return pictures;
    }
    if (IsOversized(*m_received)) {
      ++m_counts.decoded;
      CountLost();
      dropped = true;
      av_frame_unref(m_received.get());
      continue;
    }
    if (!IsShown(*m_received)) {
      dropped = true;
      av_frame_unref(m_received.get());
      continue;
    }
    MarkJpegRange(*m_received);
    store.Take(*m_received);
    ++pictures;
  }
}
