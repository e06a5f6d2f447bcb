// OpenGLImage: a host image (a logo, an icon, a marker) as one RGBA texture of the GL back-end.
//
// It owns its texture and the pixel buffer its pixels were uploaded through, and deletes both
// when it goes, with its renderer's context current. It holds no pixels
// on the processor side and draws nothing itself: OpenGLRenderer makes it (DoCreateImage) and
// draws it (DrawImage). A failed creation gives an image with texture 0 that is not IsOk.
#pragma once

#include <renderer/IRenderer.h>

class OpenGLRenderer;

class OpenGLImage : public IRendererImage {
 public:
  // `size` is the image's, `textureSize` the allocated texture's (at least the image's). The
  // renderer deletes its images before it goes.
  OpenGLImage(OpenGLRenderer* renderer, unsigned int texture, unsigned int buffer, wxSize size,
              wxSize textureSize);
  ~OpenGLImage() override;
  OpenGLImage(const OpenGLImage&) = delete;
  OpenGLImage& operator=(const OpenGLImage&) = delete;

  // Whether the texture exists.
  bool IsOk() const override;
  wxSize GetSize() const override;

  unsigned int GetTexture() const;
  unsigned int GetBuffer() const;
  wxSize GetTextureSize() const;

 private:
  OpenGLRenderer* m_renderer;
  unsigned int m_texture;
  unsigned int m_buffer;
  wxSize m_size;
  wxSize m_textureSize;
};
