// OpenGLImage: the GL names of one host image and their release.
#include "OpenGLImage.h"

#include "GLEntryPoints.h"
#include "OpenGLRenderer.h"

OpenGLImage::OpenGLImage(OpenGLRenderer* renderer, unsigned int texture, unsigned int buffer,
                         wxSize size, wxSize textureSize)
    : m_renderer(renderer),
      m_texture(texture),
      m_buffer(buffer),
      m_size(size),
      m_textureSize(textureSize) {}

// The names are deleted in the renderer's share group, whatever context is current when the
// host lets the image go. A buffer name exists only where the buffer functions do.
OpenGLImage::~OpenGLImage() {
  if (!m_texture) return;
  m_renderer->WithShareGroupCurrent([this] {
    glDeleteTextures(1, &m_texture);
    if (m_buffer) GLEntryPoints::Get().DeleteBuffers(1, &m_buffer);
  });
}

bool OpenGLImage::IsOk() const { return m_texture != 0; }
wxSize OpenGLImage::GetSize() const { return m_size; }
unsigned int OpenGLImage::GetTexture() const { return m_texture; }
unsigned int OpenGLImage::GetBuffer() const { return m_buffer; }
wxSize OpenGLImage::GetTextureSize() const { return m_textureSize; }
