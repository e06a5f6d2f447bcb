// CPictureStore: one picture by reference, or a reused buffer for raw frames.
#include "CPictureStore.h"

#include "AvColour.h"
#include "CPixelLayout.h"
#include "DecompressorTypes.h"
#include "PictureCopy.h"

CPictureStore::CPictureStore() : m_picture(av_frame_alloc()) {}

CPictureStore::~CPictureStore() = default;

void CPictureStore::Take(AVFrame& decoded) {
  decoded.pts = decoded.best_effort_timestamp;
  av_frame_unref(m_picture.get());
  av_frame_move_ref(m_picture.get(), &decoded);
  ++m_count;
}

int CPictureStore::Import(const unsigned char* const* planes, const int* pitches,
                          const CPixelLayout& layout, long long pts) {
  const AVPixelFormat format = RawStorageFormat(layout.GetFormat());
  if (!PrepareRawPicture(format, layout.GetWidth(), layout.GetHeight())) {
    return DECOMP_ERROR_INTERNAL;
  }
  ImportRawFrame(planes, pitches, layout, *m_picture);
  m_picture->pts = pts;
  m_picture->colorspace = AvMatrix(kDeliveredColour.matrix);
  m_picture->color_range = AvRange(kDeliveredColour.range);
  ++m_count;
  return DECOMP_OK;
}

// Reuses the current picture when it is our own buffer of the right format and size; a
// decoded picture (shared with the decoder's pool) or another size gets a fresh buffer.
bool CPictureStore::PrepareRawPicture(AVPixelFormat format, int width, int height) {
  AVFrame* picture = m_picture.get();
  if (!picture) return false;
  if (!IsEmpty() && picture->format == format && picture->width == width &&
      picture->height == height && av_frame_is_writable(picture)) {
    return true;
  }
  AvFramePtr fresh(av_frame_alloc());
  if (!fresh) return false;
  fresh->format = format;
  fresh->width = width;
  fresh->height = height;
  if (av_frame_get_buffer(fresh.get(), 0) < 0) return false;
  m_picture = std::move(fresh);
  return true;
}
