// The facade fixture: facades owned by the test, the GL probe run on demand, and the
// capability flags restored afterwards.
#include "FacadeTest.h"

#include <algorithm>

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

void FacadeTest::SetUp() {
  GLTest::SetUp();
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
  PumpEvents();
  return facades.back().get();
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

namespace {

// Out of the way of the frames the other suites show at the top left.
const wxPoint kScreenPlace(800, 600);

}  // namespace

void ScreenFacadeTest::SetUp() {
  FacadeTest::SetUp();
  frame->Move(kScreenPlace);
  frame->Raise();
  ASSERT_TRUE(PumpUntil([this] { return frame->GetScreenPosition() == kScreenPlace; }));
}

wxImage ScreenFacadeTest::ReadShown(wxWindow* window) {
  return ReadScreen(wxRect(window->GetScreenPosition(), window->GetClientSize()));
}
