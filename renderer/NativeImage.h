// NativeImage: a picture that NativeRenderer draws repeatedly (a logo, an icon, a marker).
//
// It keeps a reference-counted share of the image it was made from and, after the first
// opaque draw, a bitmap made from it, so opaque draws convert the pixels only once. It does
// not fade itself: translucent draws build a temporary bitmap in NativeRenderer and leave
// the image and its cached bitmap untouched.
#pragma once

#include <renderer/IRenderer.h>

class NativeImage : public IRendererImage {
 public:
  explicit NativeImage(const wxImage& image);
  ~NativeImage() override;

  bool IsOk() const override;
  // The size recorded when the image was made.
  wxSize GetSize() const override;

  const wxImage& GetImage() const;

  // The bitmap of the image for opaque drawing: made on first use (or when the kept one is
  // not valid) and kept for every later draw.
  const wxBitmap& GetBitmap();

 private:
  int m_width;
  int m_height;
  wxImage m_image;
  wxBitmap m_bitmap;
};
