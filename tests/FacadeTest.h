// The facade opened up for the tests, and the fixture its suites share: a shown frame with one
// tile, facades that the fixture destroys before the windows go, and the OpenGL capability
// flags put back as the probe left them after each test.
#pragma once

#include <memory>
#include <vector>

#include <renderer/Renderer.h>

#include "GLTest.h"

class TestRenderer : public Renderer {
 public:
  using Renderer::Renderer;

  using Renderer::m_drawOverlaysHandler;
  using Renderer::m_images;
  using Renderer::m_lastFormat;
  using Renderer::m_lastHardware;
  using Renderer::m_lastHeight;
  using Renderer::m_lastWidth;
  using Renderer::m_maxHardwareHeight;
  using Renderer::m_maxHardwareWidth;
  using Renderer::m_parent;
  using Renderer::m_primaryMode;
  using Renderer::m_primaryRenderer;
  using Renderer::m_renderer;
  using Renderer::m_renderMode;
  using Renderer::m_softwareScaleThreshold;

  // Replaces both back-ends by `backend` (owned from now on), as if the facade had chosen it
  // for `mode`, and makes the facade its overlay handler.
  void InstallBackend(RendererBase* backend, int mode);
};

class CDecompressor;

// What a host's decoding loop does with one picture: NegotiateFormat, CopyFrame with the
// negotiated values, then a paint of `window` through a client DC.
struct HostedFrame {
  int width;  // as negotiated
  int height;
  bool copied;  // CopyFrame's answer
};
HostedFrame HostFrame(Renderer& facade, CDecompressor& decoder, wxWindow* window);

class FacadeTest : public GLTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  // A facade on `parent` (the tile by default) owned by the fixture.
  TestRenderer* MakeFacade(RenderMode mode, wxWindow* parent = nullptr);
  // Waits until a GL back-end's canvas can be drawn at its final size.
  static void SettleGL(OpenGLRenderer* gl);
  // Destroys a facade made by MakeFacade.
  void DestroyFacade(TestRenderer* facade);

  // Runs the process's GL probe once (by building and dropping a GL back-end), so the
  // class-wide capability flags hold what this machine offers. SetUp does it; a test that has
  // changed the flags calls it to be sure the probe will not overwrite them later.
  static void RunProbe(wxWindow* parent);
  // The GL canvases among the children of `parent`, in the order of its child list.
  static std::vector<InternalGLCanvas*> CanvasesOn(wxWindow* parent);

  std::vector<std::unique_ptr<TestRenderer>> facades;

 private:
  bool m_savedSupported = true;
  bool m_savedRecommended = true;
  wxSize m_savedMaxTextureSize;
};

// Facade suites that read what the X server shows: their frame sits where no other suite puts
// windows, and CTest runs them one at a time (resource lock "x-screen").
class ScreenFacadeTest : public FacadeTest {
 protected:
  void SetUp() override;
  // What the X server shows of `window`'s client area.
  wxImage ReadShown(wxWindow* window);
};
