// NativeImage: an image share plus the bitmap cached for opaque draws.
#include "NativeImage.h"

// An invalid image has no size to ask for (the toolkit would assert), so it records 0 x 0.
NativeImage::NativeImage(const wxImage& image)
    : m_width(image.IsOk() ? image.GetWidth() : 0),
      m_height(image.IsOk() ? image.GetHeight() : 0),
      m_image(image) {}

// The bitmap and the image share are released by their own destructors.
NativeImage::~NativeImage() = default;

bool NativeImage::IsOk() const { return m_image.IsOk(); }

wxSize NativeImage::GetSize() const { return wxSize(m_width, m_height); }

const wxImage& NativeImage::GetImage() const { return m_image; }

const wxBitmap& NativeImage::GetBitmap() {
  if (!m_bitmap.IsOk()) m_bitmap = wxBitmap(m_image, wxBITMAP_SCREEN_DEPTH, 1.0);
  return m_bitmap;
}
