// A GL renderer opened up for the tests: its protected state and the probe's seams are public,
// and every paint keeps what it drew (the back buffer, read just before the swap, while the
// renderer's context is current; after the swap its contents would be undefined).
#pragma once

#include <wx/image.h>

#include <renderer/OpenGLRenderer.h>

// The current context's back buffer, `size` from the bottom-left origin, as a top-down image.
wxImage ReadBackBuffer(const wxSize& size);

class GLTestRenderer : public OpenGLRenderer {
 public:
  explicit GLTestRenderer(wxWindow* parent) : OpenGLRenderer(parent) {}

  wxImage drawn;  // the back buffer of the last paint into a shown canvas
  int paints = 0;
  // Buffer names generated before one fails (0 given instead); negative: none fails.
  int buffersBeforeAFailure = -1;

  unsigned int GeneratePixelBufferName() override {
    if (buffersBeforeAFailure == 0) return 0;
    if (buffersBeforeAFailure > 0) --buffersBeforeAFailure;
    return OpenGLRenderer::GeneratePixelBufferName();
  }

  void OnAfterDraw(wxDC* dc) override {
    if (IsContextReady(true)) {
      drawn = ReadBackBuffer(GetRenderClientSize());
      ++paints;
    }
    OpenGLRenderer::OnAfterDraw(dc);
  }

  using OpenGLRenderer::DetectExtensions;
  using OpenGLRenderer::DriverQueries;
  using OpenGLRenderer::DriverString;
  using OpenGLRenderer::FindMaxTextureSize;
  using OpenGLRenderer::IsRecommendedRenderer;
  using OpenGLRenderer::m_activeOverlayFont;
  using OpenGLRenderer::m_canvas;
  using OpenGLRenderer::m_context;
  using OpenGLRenderer::m_hardwareSurface;
  using OpenGLRenderer::m_isDoubleBuffered;
  using OpenGLRenderer::m_isGLInitialized;
  using OpenGLRenderer::m_ortho;
  using OpenGLRenderer::m_overlayFonts;
  using OpenGLRenderer::m_pixelBuffers;
  using OpenGLRenderer::m_programs;
  using OpenGLRenderer::m_texturePixelFormat;
  using OpenGLRenderer::m_textures;
  using OpenGLRenderer::m_textureSize;
  using OpenGLRenderer::m_textureTargets;
  using OpenGLRenderer::m_viewport;
  using OpenGLRenderer::Probe;
  using OpenGLRenderer::SourceCoordinates;
  using OpenGLRenderer::SwitchToMultipleContexts;
  using OpenGLRenderer::TextureRect;
  using RendererBase::m_frameBuffer;
  using RendererBase::m_hasFrame;
  using RendererBase::m_images;
};
