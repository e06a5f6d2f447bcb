// CCodecSession: send/receive on libavcodec, damaged pictures counted and shown or dropped.
#include "CCodecSession.h"

#include <cstring>
#include <string>

#include "AvColour.h"
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

// Damaged by the codec's own account or, for H.265, by the picture's hash.
bool CCodecSession::IsFlagged(const AVFrame& picture) {
  const bool codec = picture.decode_error_flags != 0 || (picture.flags & AV_FRAME_FLAG_CORRUPT);
  const bool hash = m_checksHashes && m_hashes.IsDamaged(picture);
  return codec || hash;
}

// Counts the picture and tells whether the policy shows it. Damage carries over to every
// picture until a key frame that is itself undamaged.
bool CCodecSession::IsShown(const AVFrame& picture, bool flagged) {
  ++m_counts.decoded;
  if (flagged || picture.key_frame) m_predictedFromDamage = flagged;
  const bool damaged = flagged || m_predictedFromDamage;
  if (!damaged) return true;
  ++m_counts.damaged;
  if (m_policy == DamagePolicy::kConceal) return true;
  ++m_counts.dropped;
  return false;
}

// MJPEG is BT.601 in full range by the JPEG convention (JFIF), at every size, whether or not
// the decoder says so.
void CCodecSession::MarkJpegColour(AVFrame& picture) const {
  if (m_context->codec_id != AV_CODEC_ID_MJPEG) return;
  if (picture.color_range == AVCOL_RANGE_UNSPECIFIED) picture.color_range = AVCOL_RANGE_JPEG;
  if (picture.colorspace == AVCOL_SPC_UNSPECIFIED) picture.colorspace = AVCOL_SPC_BT470BG;
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
  // Pictures come out uncropped so that their hashes can be checked; Receive crops them.
  context->apply_cropping = 0;
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
  m_checksHashes = codec->id == AV_CODEC_ID_HEVC;
  m_hashes.Reset(stream.extradata);
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
  if (m_checksHashes) m_hashes.Read(data, size, pts);
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
    // The hash covers the coded picture, so it is checked before the picture is cropped as
    // libavcodec would have cropped it (data pointers kept aligned); a crop window that does
    // not fit the picture is damage too.
    const bool flagged = IsFlagged(*m_received);
    const bool cropped = av_frame_apply_cropping(m_received.get(), 0) >= 0;
    if (!IsShown(*m_received, flagged || !cropped)) {
      dropped = true;
      av_frame_unref(m_received.get());
      continue;
    }
    ForgetUnknownColourCodes(*m_received);
    MarkJpegColour(*m_received);
    store.Take(*m_received);
    ++pictures;
  }
}
