// CScaler: a cached libswscale context with its output picture.
#include "CScaler.h"

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include "AvColour.h"
#include "AvPixelFormats.h"
#include "PictureCopy.h"

namespace {

int ChromaShifts(AVPixelFormat format) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  return desc.log2_chroma_w + desc.log2_chroma_h;
}

// Bilinear filtering: smooth up- and downscaling at a fraction of the cost of bicubic. A step
// that only spreads chroma over more samples at the same picture size replicates each sample
// (as the frame-buffer table's readers do). A step that changes how colour is written (YUV to
// RGB or back, another matrix or range) rounds accurately and computes every output pixel
// from chroma at full width: libswscale's fast paths are up to two levels off.
int FlagsFor(const CScaler::Key& key) {
  const bool unscaled = key.sourceWidth == key.targetWidth && key.sourceHeight == key.targetHeight;
  if (IsRgbFormat(key.sourceFormat) != IsRgbFormat(key.targetFormat) ||
      !(key.sourceColour == key.targetColour)) {
    return SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;
  }
  if (unscaled && ChromaShifts(key.targetFormat) < ChromaShifts(key.sourceFormat)) {
    return SWS_POINT;
  }
  return SWS_BILINEAR;
}

constexpr int kNeutral = 1 << 16;  // brightness 0, contrast and saturation 1 in 16.16

// The matrices and ranges of both sides; set after the context is built, when libswscale can
// add the RGB step that a YUV-to-YUV change of matrix needs.
bool SetColour(SwsContext& context, const CScaler::Key& key) {
  const ColourSpace_t& source = key.sourceColour;
  const ColourSpace_t& target = key.targetColour;
  return sws_setColorspaceDetails(&context, sws_getCoefficients(SwsMatrix(source.matrix)),
                                  source.range == ColourRange::kFull,
                                  sws_getCoefficients(SwsMatrix(target.matrix)),
                                  target.range == ColourRange::kFull, 0, kNeutral, kNeutral) >= 0;
}

// A picture's plane pointers and pitches, as a view to read or to write.
template <typename View, typename Picture>
View PlanesOf(Picture& picture) {
  View view;
  for (int plane = 0; plane < 4; ++plane) {
    view.data[plane] = picture.data[plane];
    view.linesize[plane] = picture.linesize[plane];
  }
  return view;
}

}  // namespace

PlaneView ViewOf(const AVFrame& picture) { return PlanesOf<PlaneView>(picture); }

TargetView TargetOf(AVFrame& picture) { return PlanesOf<TargetView>(picture); }

bool CScaler::Key::operator==(const Key& other) const {
  return sourceFormat == other.sourceFormat && sourceColour == other.sourceColour &&
         sourceWidth == other.sourceWidth && sourceHeight == other.sourceHeight &&
         targetFormat == other.targetFormat && targetColour == other.targetColour &&
         targetWidth == other.targetWidth && targetHeight == other.targetHeight;
}

CScaler::CScaler() : m_output(av_frame_alloc()) {}

CScaler::~CScaler() = default;

bool CScaler::Run(const Key& key, const PlaneView& source) {
  return m_output &&
         EnsurePictureBuffer(*m_output, key.targetFormat, key.targetWidth, key.targetHeight) &&
         RunInto(key, source, TargetOf(*m_output));
}

bool CScaler::RunInto(const Key& key, const PlaneView& source, const TargetView& target) {
  if (!Prepare(key)) return false;
  const int rows = sws_scale(m_context.get(), source.data, source.linesize, 0, key.sourceHeight,
                             target.data, target.linesize);
  return rows == key.targetHeight;
}

bool CScaler::Prepare(const Key& key) {
  if (!m_context || !(m_key == key)) {
    ++m_setupCount;
    m_context = Build(key);
    m_key = key;
  }
  return m_context != nullptr;
}

SwsContextPtr CScaler::Build(const Key& key) {
  SwsContextPtr context(sws_alloc_context());
  if (!context) return nullptr;
  av_opt_set_int(context.get(), "srcw", key.sourceWidth, 0);
  av_opt_set_int(context.get(), "srch", key.sourceHeight, 0);
  av_opt_set_int(context.get(), "src_format", key.sourceFormat, 0);
  av_opt_set_int(context.get(), "src_range", key.sourceColour.range == ColourRange::kFull, 0);
  av_opt_set_int(context.get(), "dstw", key.targetWidth, 0);
  av_opt_set_int(context.get(), "dsth", key.targetHeight, 0);
  av_opt_set_int(context.get(), "dst_format", key.targetFormat, 0);
  av_opt_set_int(context.get(), "dst_range", key.targetColour.range == ColourRange::kFull, 0);
  av_opt_set_int(context.get(), "sws_flags", FlagsFor(key), 0);
  if (sws_init_context(context.get(), nullptr, nullptr) < 0) return nullptr;
  return SetColour(*context, key) ? std::move(context) : nullptr;
}
