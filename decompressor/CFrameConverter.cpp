// CFrameConverter: libswscale into a cached scratch picture, then a copy by the table's rows.
#include "CFrameConverter.h"

#include <cstddef>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include "AvPixelFormats.h"
#include "CPixelLayout.h"
#include "DecompressorTypes.h"
#include "PictureCopy.h"

namespace {

// Bilinear filtering: smooth up- and downscaling at a fraction of the cost of bicubic.
constexpr int kScalerFlags = SWS_BILINEAR;

bool IsChromaPlane(const AVPixFmtDescriptor& desc, int plane) {
  return (plane == 1 || plane == 2) && !(desc.flags & AV_PIX_FMT_FLAG_RGB);
}

// Pictures whose planes can be addressed sample by sample; palettes, bit-packed and
// hardware pictures cannot be cropped by moving plane pointers.
bool IsAddressable(AVPixelFormat format) {
  const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(format);
  const auto excluded = AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_HWACCEL;
  return desc && !(desc->flags & excluded) && sws_isSupportedInput(format);
}

// The crop's top-left corner in every plane. Subsampled chroma starts at the sample that covers
// the corner, so an odd corner is exact in luma and within half a pixel in chroma.
CFrameConverter::PlaneView CropView(const AVFrame& frame, AVPixelFormat format,
                                    const PtzRect& crop) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  int steps[4];
  av_image_fill_max_pixsteps(steps, nullptr, &desc);
  CFrameConverter::PlaneView view;
  for (int plane = 0; plane < av_pix_fmt_count_planes(format); ++plane) {
    const bool chroma = IsChromaPlane(desc, plane);
    const int x = chroma ? crop.x >> desc.log2_chroma_w : crop.x;
    const int y = chroma ? crop.y >> desc.log2_chroma_h : crop.y;
    view.data[plane] = frame.data[plane] + static_cast<ptrdiff_t>(y) * frame.linesize[plane] +
                       static_cast<ptrdiff_t>(x) * steps[plane];
    view.linesize[plane] = frame.linesize[plane];
  }
  return view;
}

// Copies each plane's table rows into the caller's plane, `pitch` apart.
void CopyOut(const uint8_t* const* data, const int* linesizes, const CPixelLayout& target,
             unsigned char* const* planes, const int* pitches) {
  for (int plane = 0; plane < target.GetPlaneCount(); ++plane) {
    const int caller = CallerPlane(target.GetFormat(), plane);
    av_image_copy_plane(planes[caller], pitches[caller], data[plane], linesizes[plane],
                        target.GetRowBytes(caller), target.GetRows(caller));
  }
}

}  // namespace

bool CFrameConverter::ScalerKey::operator==(const ScalerKey& other) const {
  return sourceFormat == other.sourceFormat && fullRange == other.fullRange &&
         sourceWidth == other.sourceWidth && sourceHeight == other.sourceHeight &&
         targetFormat == other.targetFormat && targetWidth == other.targetWidth &&
         targetHeight == other.targetHeight;
}

CFrameConverter::CFrameConverter() : m_scratch(av_frame_alloc()), m_staging(av_frame_alloc()) {}

CFrameConverter::~CFrameConverter() = default;

int CFrameConverter::Convert(const AVFrame& source, const PtzRect& crop, const CPixelLayout& target,
                             unsigned char* const* planes, const int* pitches) {
  const AvSourceFormat described = DescribeSource(source);
  if (!IsAddressable(described.format)) return DECOMP_ERROR_UNSUPPORTED;
  ScalerKey key{described.format,
                described.fullRange,
                crop.width,
                crop.height,
                ToAvPixelFormat(target.GetFormat()),
                target.GetWidth(),
                target.GetHeight()};
  PlaneView view = CropView(source, described.format, crop);
  if (IsPlainCopy(key)) {
    CopyOut(view.data, view.linesize, target, planes, pitches);
    return DECOMP_OK;
  }
  if (IsUnscaledOddSize(key) && !Stage(key, view)) return DECOMP_ERROR_INTERNAL;
  const int result = Scale(key, view.data, view.linesize);
  if (result != DECOMP_OK) return result;
  CopyOut(m_scratch->data, m_scratch->linesize, target, planes, pitches);
  return DECOMP_OK;
}

bool CFrameConverter::IsPlainCopy(const ScalerKey& key) {
  return key.sourceFormat == key.targetFormat && !key.fullRange &&
         key.sourceWidth == key.targetWidth && key.sourceHeight == key.targetHeight;
}

bool CFrameConverter::IsUnscaledOddSize(const ScalerKey& key) {
  const bool unscaled = key.sourceWidth == key.targetWidth && key.sourceHeight == key.targetHeight;
  return unscaled && (key.targetWidth % 2 != 0 || key.targetHeight % 2 != 0);
}

// libswscale's unscaled converters drop the last column of some odd widths, so an unscaled
// conversion of an odd size runs one size up, on a copy of the crop whose last column and row
// repeat; the copy out then leaves the extra column and row behind.
bool CFrameConverter::Stage(ScalerKey& key, PlaneView& view) {
  const int width = key.sourceWidth + key.sourceWidth % 2;
  const int height = key.sourceHeight + key.sourceHeight % 2;
  if (!m_staging || !EnsurePictureBuffer(*m_staging, key.sourceFormat, width, height)) {
    return false;
  }
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(key.sourceFormat);
  int rowBytes[4] = {};
  int rows[4] = {};
  av_image_fill_linesizes(rowBytes, key.sourceFormat, key.sourceWidth);
  for (int plane = 0; plane < av_pix_fmt_count_planes(key.sourceFormat); ++plane) {
    const int shift = IsChromaPlane(desc, plane) ? desc.log2_chroma_h : 0;
    rows[plane] = AV_CEIL_RSHIFT(key.sourceHeight, shift);
  }
  CopyExtended(view.data, view.linesize, rowBytes, rows, *m_staging);
  view = PlaneView{};
  for (int plane = 0; plane < 4; ++plane) {
    view.data[plane] = m_staging->data[plane];
    view.linesize[plane] = m_staging->linesize[plane];
  }
  key.sourceWidth = key.targetWidth = width;
  key.sourceHeight = key.targetHeight = height;
  return true;
}

int CFrameConverter::Scale(const ScalerKey& key, const uint8_t* const* data, const int* linesizes) {
  if (!EnsureScaler(key) || !EnsureScratch(key)) return DECOMP_ERROR_INTERNAL;
  const int rows = sws_scale(m_scaler.get(), data, linesizes, 0, key.sourceHeight, m_scratch->data,
                             m_scratch->linesize);
  return rows == key.targetHeight ? DECOMP_OK : DECOMP_ERROR_INTERNAL;
}

bool CFrameConverter::EnsureScaler(const ScalerKey& key) {
  if (m_scaler && m_key == key) return true;
  ++m_setupCount;
  m_scaler = BuildScaler(key);
  m_key = key;
  return m_scaler != nullptr;
}

SwsContextPtr CFrameConverter::BuildScaler(const ScalerKey& key) {
  SwsContextPtr scaler(sws_alloc_context());
  if (!scaler) return nullptr;
  av_opt_set_int(scaler.get(), "srcw", key.sourceWidth, 0);
  av_opt_set_int(scaler.get(), "srch", key.sourceHeight, 0);
  av_opt_set_int(scaler.get(), "src_format", key.sourceFormat, 0);
  av_opt_set_int(scaler.get(), "src_range", key.fullRange ? 1 : 0, 0);
  av_opt_set_int(scaler.get(), "dstw", key.targetWidth, 0);
  av_opt_set_int(scaler.get(), "dsth", key.targetHeight, 0);
  av_opt_set_int(scaler.get(), "dst_format", key.targetFormat, 0);
  av_opt_set_int(scaler.get(), "dst_range", 0, 0);
  av_opt_set_int(scaler.get(), "sws_flags", kScalerFlags, 0);
  if (sws_init_context(scaler.get(), nullptr, nullptr) < 0) return nullptr;
  return scaler;
}

bool CFrameConverter::EnsureScratch(const ScalerKey& key) {
  return m_scratch &&
         EnsurePictureBuffer(*m_scratch, key.targetFormat, key.targetWidth, key.targetHeight);
}
