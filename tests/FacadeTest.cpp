// The facade fixture: facades owned by the test, the GL probe run on demand, and the
// capability flags restored afterwards.
#include "FacadeTest.h"

#include <algorithm>

#include <wx/dcclient.h>

#include <decompressor/CDecompressor.h>
#include <renderer/InternalGLCanvas.h>

void TestRenderer::InstallBackend(RendererBase* backend, int mode) {
  if (m_renderer != m_primaryRenderer) delete m_primaryRenderer;
  delete m_renderer;
  m_renderer = backend;
  m_primaryRenderer = backend;
  m_primaryMode = mode;
  backend->SetDrawOverlaysHandler(this);
}

HostedFrame HostFrame(Renderer& facade, CDecompressor& decoder, wxWindow* window) {
  int width = decoder.GetWidth();
  int height = decoder.GetHeight();
  int format = PIXEL_FORMAT_I420;
  wxRect source(0, 0, width, height);
  facade.NegotiateFormat(width, height, format, source, &decoder, nullptr);
  const bool copied = facade.CopyFrame(decoder, width, height, format, source, nullptr);
  wxClientDC dc(window);
  facade.Render(&dc);
  return HostedFrame{width, height, copied};
}

void FacadeTest::SetUp() {
  GLTest::SetUp();
  // The flags are saved as the probe leaves them, so a test that changes them cannot leave
  // the next test of the process a machine it does not have.
  RunProbe(tile);
  m_savedSupported = OpenGLRenderer::m_isSupported;
  m_savedRecommended = OpenGLRenderer::m_isRecommended;
  m_savedMaxTextureSize = OpenGLRenderer::m_maxTextureSize;
}

void FacadeTest::TearDown() {
  facades.clear();
  PumpEvents();  // back-ends waiting for idle-time deletion go now
  CDecompressor::SetVideoOutputFactory(nullptr);
  OpenGLRenderer::m_isSupported = m_savedSupported;
  OpenGLRenderer::m_isRecommended = m_savedRecommended;
  OpenGLRenderer::m_maxTextureSize = m_savedMaxTextureSize;
  GLTest::TearDown();
}

TestRenderer* FacadeTest::MakeFacade(RenderMode mode, wxWindow* parent) {
  facades.push_back(std::make_unique<TestRenderer>(parent ? parent : tile, mode));
  TestRenderer* facade = facades.back().get();
  if (auto* gl = dynamic_cast<OpenGLRenderer*>(facade->m_renderer)) SettleGL(gl);
  PumpEvents();
  return facade;
}

void FacadeTest::SettleGL(OpenGLRenderer* gl) {
  const std::vector<InternalGLCanvas*> canvases = CanvasesOn(gl->GetParent());
  if (!canvases.empty()) SettleCanvas(gl, canvases.back());
}

void FacadeTest::DestroyFacade(TestRenderer* facade) {
  const auto owned = std::find_if(facades.begin(), facades.end(),
                                  [facade](const auto& item) { return item.get() == facade; });
  ASSERT_NE(facades.end(), owned);
  facades.erase(owned);
}

void FacadeTest::RunProbe(wxWindow* parent) { OpenGLRenderer probe(parent); }

std::vector<InternalGLCanvas*> FacadeTest::CanvasesOn(wxWindow* parent) {
  std::vector<InternalGLCanvas*> canvases;
  for (wxWindow* child : parent->GetChildren()) {
    if (auto* canvas = dynamic_cast<InternalGLCanvas*>(child)) canvases.push_back(canvas);
  }
  return canvases;
}

void ScreenFacadeTest::SetUp() {
  FacadeTest::SetUp();
  ASSERT_TRUE(MoveToScreenPlace());
  // The window manager-less server moves and exposes the frame a little later than the
  // toolkit reports the move: wait until the tile is on screen in its colour.
  tile->Refresh();
  ASSERT_TRUE(PumpUntil([this] {
    const wxImage shown = ReadShown(tile);
    return PixelNear(shown, shown.GetWidth() / 2, shown.GetHeight() / 2, kTileColour, 0);
  })) << "the tile never appeared on screen";
}

wxImage ScreenFacadeTest::ReadShown(wxWindow* window) {
  return ReadScreen(wxRect(window->GetScreenPosition(), window->GetClientSize()));
}
