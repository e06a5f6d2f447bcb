// CScaler: a cached libswscale context with its output picture.
#include "CScaler.h"

extern "C" {
#include <libavutil/opt.h>
}

#include "PictureCopy.h"

namespace {

// Bilinear filtering: smooth up- and downscaling at a fraction of the cost of bicubic.
constexpr int kScalerFlags = SWS_BILINEAR;

}  // namespace

PlaneView ViewOf(const AVFrame& picture) {
  PlaneView view;
  for (int plane = 0; plane < 4; ++plane) {
    view.data[plane] = picture.data[plane];
    view.linesize[plane] = picture.linesize[plane];
  }
  return view;
}

bool CScaler::Key::operator==(const Key& other) const {
  return sourceFormat == other.sourceFormat && fullRange == other.fullRange &&
         sourceWidth == other.sourceWidth && sourceHeight == other.sourceHeight &&
         targetFormat == other.targetFormat && targetWidth == other.targetWidth &&
         targetHeight == other.targetHeight;
}

CScaler::CScaler() : m_output(av_frame_alloc()) {}

CScaler::~CScaler() = default;

bool CScaler::Run(const Key& key, const PlaneView& source) {
  if (!Prepare(key)) return false;
  const int rows = sws_scale(m_context.get(), source.data, source.linesize, 0, key.sourceHeight,
                             m_output->data, m_output->linesize);
  return rows == key.targetHeight;
}

bool CScaler::Prepare(const Key& key) {
  if (!m_output) return false;
  if (!m_context || !(m_key == key)) {
    ++m_setupCount;
    m_context = Build(key);
    m_key = key;
  }
  return m_context &&
         EnsurePictureBuffer(*m_output, key.targetFormat, key.targetWidth, key.targetHeight);
}

SwsContextPtr CScaler::Build(const Key& key) {
  SwsContextPtr context(sws_alloc_context());
  if (!context) return nullptr;
  av_opt_set_int(context.get(), "srcw", key.sourceWidth, 0);
  av_opt_set_int(context.get(), "srch", key.sourceHeight, 0);
  av_opt_set_int(context.get(), "src_format", key.sourceFormat, 0);
  av_opt_set_int(context.get(), "src_range", key.fullRange ? 1 : 0, 0);
  av_opt_set_int(context.get(), "dstw", key.targetWidth, 0);
  av_opt_set_int(context.get(), "dsth", key.targetHeight, 0);
  av_opt_set_int(context.get(), "dst_format", key.targetFormat, 0);
  av_opt_set_int(context.get(), "dst_range", 0, 0);
  av_opt_set_int(context.get(), "sws_flags", kScalerFlags, 0);
  if (sws_init_context(context.get(), nullptr, nullptr) < 0) return nullptr;
  return context;
}
