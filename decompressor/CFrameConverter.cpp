// CFrameConverter: plain copies, staged odd sizes, one or two libswscale steps, then a copy
// by the table's rows.
#include "CFrameConverter.h"

#include <cstddef>
#include <cstdint>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include "AvColour.h"
#include "AvPixelFormats.h"
#include "CPixelLayout.h"
#include "DecompressorTypes.h"
#include "PictureCopy.h"
#include "PictureHalving.h"
#include "YuvMatrix.h"

namespace {

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

bool IsUnscaled(const CScaler::Key& key) {
  return key.sourceWidth == key.targetWidth && key.sourceHeight == key.targetHeight;
}

bool IsPlainCopy(const CScaler::Key& key) {
  return key.sourceFormat == key.targetFormat && key.sourceColour == key.targetColour &&
         IsUnscaled(key);
}

// RGB samples carry no matrix or range: an RGB source counts as already delivered colour.
ColourSpace_t SourceColour(AVPixelFormat format, const ColourSpace_t& colour) {
  return IsRgbFormat(format) ? kDeliveredColour : colour;
}

// YUV into YUV from another matrix or range: rewritten directly where the format allows.
bool NeedsRewrite(const CScaler::Key& key) {
  return !IsRgbFormat(key.targetFormat) && !(key.sourceColour == kDeliveredColour) &&
         CanRewriteYuv(key.sourceFormat);
}

bool IsUnscaledOddSize(const CScaler::Key& key) {
  return IsUnscaled(key) && (key.targetWidth % 2 != 0 || key.targetHeight % 2 != 0);
}

// A source of a format HalvePicture takes, bound for half its size or less in both directions.
bool HalvesFirst(const CScaler::Key& key) {
  return CanRewriteYuv(key.sourceFormat) && key.targetWidth <= key.sourceWidth / 2 &&
         key.targetHeight <= key.sourceHeight / 2;
}

// YUV into another size or planar YUV format that RewriteYuv takes: libswscale brings it there
// in the source's colour and the rewrite then writes the caller's planes, so the rewrite runs
// over the target's samples, not the source's (a 1280x720 picture shown in a 480x270 tile has
// a seventh of them). Unscaled odd sizes stay on the staged road.
bool RewritesAfterScaling(const CScaler::Key& key) {
  return NeedsRewrite(key) && CanRewriteYuv(key.targetFormat) && !IsUnscaledOddSize(key);
}

// The YUV format to scale in before converting to RGB at the target size, or
// AV_PIX_FMT_NONE where one step is the better road (odd scaled target sizes, sources that are
// not YUV with subsampled chroma, targets that are not RGB). The first step brings chroma to
// full resolution, so the conversion to RGB reads one chroma sample per pixel.
AVPixelFormat IntermediateFormat(const CScaler::Key& key) {
  const AVPixFmtDescriptor& source = *av_pix_fmt_desc_get(key.sourceFormat);
  const bool evenTarget = key.targetWidth % 2 == 0 && key.targetHeight % 2 == 0;
  const bool subsampledChroma = !IsRgbFormat(key.sourceFormat) && source.nb_components >= 3 &&
                                source.log2_chroma_w + source.log2_chroma_h > 0;
  if (!evenTarget || !subsampledChroma || !IsRgbFormat(key.targetFormat)) return AV_PIX_FMT_NONE;
  return AV_PIX_FMT_YUV444P;
}

// The crop's top-left corner in every plane. Subsampled chroma starts at the sample that covers
// the corner, so an odd corner is exact in luma and within half a pixel in chroma.
PlaneView CropView(const AVFrame& frame, AVPixelFormat format, const PtzRect& crop) {
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  int steps[4];
  av_image_fill_max_pixsteps(steps, nullptr, &desc);
  PlaneView view;
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
void CopyOut(const PlaneView& view, const CPixelLayout& target, unsigned char* const* planes,
             const int* pitches) {
  for (int plane = 0; plane < target.GetPlaneCount(); ++plane) {
    const int caller = CallerPlane(target.GetFormat(), plane);
    CopyPlaneRows(planes[caller], pitches[caller], view.data[plane], view.linesize[plane],
                  target.GetRowBytes(caller), target.GetRows(caller));
  }
}

// The caller's planes in FFmpeg's plane order.
TargetView CallerPlanes(const CPixelLayout& target, unsigned char* const* planes,
                        const int* pitches) {
  TargetView view;
  for (int plane = 0; plane < target.GetPlaneCount(); ++plane) {
    const int caller = CallerPlane(target.GetFormat(), plane);
    view.data[plane] = planes[caller];
    view.linesize[plane] = pitches[caller];
  }
  return view;
}

// The caller's planes as RewriteYuv writes them: the chroma the table gives them.
YuvTarget CallerYuvTarget(const CPixelLayout& target, unsigned char* const* planes,
                          const int* pitches) {
  const int chroma = CallerPlane(target.GetFormat(), 1);
  return YuvTarget{CallerPlanes(target, planes, pitches), target.GetRowBytes(chroma),
                   target.GetRows(chroma)};
}

CScaler::Key InDeliveredColour(CScaler::Key key) {
  key.sourceColour = kDeliveredColour;
  return key;
}

// Whether libswscale may write the caller's planes itself. Its vector writers round a row up
// to their width and write past its end (measured with libswscale 6.7 over every target
// format, scaled and unscaled, at every even width up to 2100: rows of a multiple of 16 bytes
// still got bytes written past their end, rows of a multiple of 32 none), and it wants its
// planes on 16-byte boundaries. So: every plane exactly as FFmpeg lays out the format (which
// the table's odd sizes are not), its rows a multiple of 32 bytes, its pointer and pitch
// multiples of 16. Other planes get libswscale's picture copied by the table's rows.
bool TakesSwscaleWrites(const CPixelLayout& target, unsigned char* const* planes,
                        const int* pitches) {
  const AVPixelFormat format = ToAvPixelFormat(target.GetFormat());
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(format);
  int rowBytes[4] = {};
  av_image_fill_linesizes(rowBytes, format, target.GetWidth());
  for (int plane = 0; plane < target.GetPlaneCount(); ++plane) {
    const int caller = CallerPlane(target.GetFormat(), plane);
    const int shift = IsChromaPlane(desc, plane) ? desc.log2_chroma_h : 0;
    const bool laidOut = target.GetRowBytes(caller) == rowBytes[plane] &&
                         target.GetRows(caller) == AV_CEIL_RSHIFT(target.GetHeight(), shift);
    const bool aligned = rowBytes[plane] > 0 && rowBytes[plane] % 32 == 0 &&
                         reinterpret_cast<uintptr_t>(planes[caller]) % 16 == 0 &&
                         pitches[caller] % 16 == 0;
    if (!laidOut || !aligned) return false;
  }
  return true;
}

}  // namespace

CFrameConverter::CFrameConverter() : m_staging(av_frame_alloc()), m_rewritten(av_frame_alloc()) {}

CFrameConverter::~CFrameConverter() = default;

int CFrameConverter::Convert(const AVFrame& source, const ColourSpace_t& colour,
                             const PtzRect& crop, const CPixelLayout& target,
                             unsigned char* const* planes, const int* pitches) {
  const AVPixelFormat format = DescribeSource(source).format;
  if (!IsAddressable(format)) return DECOMP_ERROR_UNSUPPORTED;
  CScaler::Key key{format,
                   SourceColour(format, colour),
                   crop.width,
                   crop.height,
                   ToAvPixelFormat(target.GetFormat()),
                   kDeliveredColour,
                   target.GetWidth(),
                   target.GetHeight()};
  PlaneView view = CropView(source, format, crop);
  for (size_t step = 0; HalvesFirst(key); ++step) {
    if (!Halve(step, key, view)) return DECOMP_ERROR_INTERNAL;
  }
  if (NeedsRewrite(key)) {
    // Rewritten at its own format and size, it goes straight into the caller's planes.
    if (IsPlainCopy(InDeliveredColour(key))) {
      RewriteYuv(view, format, key.sourceWidth, key.sourceHeight, key.sourceColour,
                 CallerYuvTarget(target, planes, pitches));
      return DECOMP_OK;
    }
    if (RewritesAfterScaling(key)) return ScaleAndRewrite(key, view, target, planes, pitches);
    if (!Rewrite(key, view)) return DECOMP_ERROR_INTERNAL;
  }
  if (IsPlainCopy(key)) {
    CopyOut(view, target, planes, pitches);
    return DECOMP_OK;
  }
  if (CanConvertYuvToRgb(key.sourceFormat, key.targetFormat)) {
    return ToRgb(key, view, planes[0], pitches[0]);
  }
  return Scale(key, view, target, planes, pitches);
}

int CFrameConverter::GetSetupCount() const {
  return m_first.GetSetupCount() + m_second.GetSetupCount();
}

// YUV into RGB: where the size changes, scaled in YUV to 4:4:4 at the target size first (the
// source's colour kept), then converted by our own step straight into the caller's rows.
int CFrameConverter::ToRgb(const CScaler::Key& key, PlaneView view, uint8_t* rgb, int pitch) {
  AVPixelFormat format = key.sourceFormat;
  if (!IsUnscaled(key)) {
    CScaler::Key scaling = key;
    scaling.targetFormat = AV_PIX_FMT_YUV444P;
    scaling.targetColour = key.sourceColour;
    if (!m_first.Run(scaling, view)) return DECOMP_ERROR_INTERNAL;
    view = ViewOf(m_first.Output());
    format = AV_PIX_FMT_YUV444P;
  }
  ConvertYuvToRgb(view, format, key.targetWidth, key.targetHeight, key.sourceColour,
                  key.targetFormat, rgb, pitch);
  return DECOMP_OK;
}

// Scaled (or brought to the target's format) in the source's colour, then rewritten into
// delivered colour straight into the caller's planes.
int CFrameConverter::ScaleAndRewrite(const CScaler::Key& key, const PlaneView& view,
                                     const CPixelLayout& target, unsigned char* const* planes,
                                     const int* pitches) {
  CScaler::Key scaling = key;
  scaling.targetColour = key.sourceColour;
  if (!m_first.Run(scaling, view)) return DECOMP_ERROR_INTERNAL;
  RewriteYuv(ViewOf(m_first.Output()), key.targetFormat, key.targetWidth, key.targetHeight,
             key.sourceColour, CallerYuvTarget(target, planes, pitches));
  return DECOMP_OK;
}

// The source at half its size, in the picture of halving `step` (each step keeps its own, so a
// steady stream allocates nothing); from here on the source.
bool CFrameConverter::Halve(size_t step, CScaler::Key& key, PlaneView& view) {
  while (m_halved.size() <= step) m_halved.emplace_back(av_frame_alloc());
  AVFrame* picture = m_halved[step].get();
  if (!picture ||
      !HalvePicture(view, key.sourceFormat, key.sourceWidth, key.sourceHeight, *picture)) {
    return false;
  }
  view = ViewOf(*picture);
  key.sourceWidth /= 2;
  key.sourceHeight /= 2;
  return true;
}

// The crop in delivered colour, in a picture of its own; from here on the source.
bool CFrameConverter::Rewrite(CScaler::Key& key, PlaneView& view) {
  if (!m_rewritten ||
      !EnsurePictureBuffer(*m_rewritten, key.sourceFormat, key.sourceWidth, key.sourceHeight)) {
    return false;
  }
  const AVPixFmtDescriptor& desc = *av_pix_fmt_desc_get(key.sourceFormat);
  const YuvTarget whole{TargetOf(*m_rewritten), AV_CEIL_RSHIFT(key.sourceWidth, desc.log2_chroma_w),
                        AV_CEIL_RSHIFT(key.sourceHeight, desc.log2_chroma_h)};
  RewriteYuv(view, key.sourceFormat, key.sourceWidth, key.sourceHeight, key.sourceColour, whole);
  view = ViewOf(*m_rewritten);
  key = InDeliveredColour(key);
  return true;
}

// libswscale's unscaled converters drop the last column of some odd widths, so an unscaled
// conversion of an odd size runs one size up, on a copy of the crop whose last column and row
// repeat; the copy out then leaves the extra column and row behind.
bool CFrameConverter::Stage(CScaler::Key& key, PlaneView& view) {
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
  view = ViewOf(*m_staging);
  key.sourceWidth = key.targetWidth = width;
  key.sourceHeight = key.targetHeight = height;
  return true;
}

// The libswscale road: one step, or two where IntermediateFormat says so; the last step writes
// the caller's planes where they take what libswscale writes, its own picture otherwise, which
// is then copied by the table's rows.
int CFrameConverter::Scale(CScaler::Key key, PlaneView view, const CPixelLayout& target,
                           unsigned char* const* planes, const int* pitches) {
  const bool staged = IsUnscaledOddSize(key);
  if (staged && !Stage(key, view)) return DECOMP_ERROR_INTERNAL;
  CScaler* last = &m_first;
  const AVPixelFormat between = IntermediateFormat(key);
  if (between != AV_PIX_FMT_NONE) {
    // The scaling step keeps the source's colour; the converting step reads it.
    CScaler::Key scaling = key;
    scaling.targetFormat = between;
    scaling.targetColour = key.sourceColour;
    if (!m_first.Run(scaling, view)) return DECOMP_ERROR_INTERNAL;
    view = ViewOf(m_first.Output());
    key.sourceFormat = between;
    key.sourceWidth = key.targetWidth;
    key.sourceHeight = key.targetHeight;
    last = &m_second;
  }
  // A staged picture is larger than the caller's.
  if (!staged && TakesSwscaleWrites(target, planes, pitches)) {
    const bool done = last->RunInto(key, view, CallerPlanes(target, planes, pitches));
    return done ? DECOMP_OK : DECOMP_ERROR_INTERNAL;
  }
  if (!last->Run(key, view)) return DECOMP_ERROR_INTERNAL;
  CopyOut(ViewOf(last->Output()), target, planes, pitches);
  return DECOMP_OK;
}
