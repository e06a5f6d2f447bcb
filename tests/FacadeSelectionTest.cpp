// The facade's choice of back-end: the selection table against the machine's capabilities and
// the decoder's video output, the mode switch with its idle-time deletion of the old back-end,
// and the settings that survive a switch.
#include <string>
#include <tuple>

#include <wx/dcmemory.h>

#include <decompressor/CDecompressor.h>
#include <renderer/InternalGLCanvas.h>
#include <renderer/NativeRenderer.h>
#include <renderer/VideoOutRenderer.h>

#include "FacadeTest.h"
#include "RecordingVideoOutput.h"
#include "TestBackend.h"

namespace {

enum class GLState { RecommendedAndSupported, SupportedOnly, Unsupported };

enum class Backend { Native, OpenGL, VideoOut };

Backend KindOf(IRenderer* backend) {
  if (dynamic_cast<VideoOutRenderer*>(backend)) return Backend::VideoOut;
  if (dynamic_cast<OpenGLRenderer*>(backend)) return Backend::OpenGL;
  EXPECT_NE(nullptr, dynamic_cast<NativeRenderer*>(backend));
  return Backend::Native;
}

std::string NameOf(Backend backend) {
  switch (backend) {
    case Backend::Native: return "NativeRenderer";
    case Backend::OpenGL: return "OpenGLRenderer";
    default: return "VideoOutRenderer";
  }
}

// The back-end the selection rules give, written out from the rules rather than taken from the
// facade: with a video output everything is software through it; automatic mode takes OpenGL
// only when it is supported and recommended; a definite OpenGL request only needs support; the
// reserved mode and values outside the enumeration fall through to software.
Backend Expected(int mode, GLState gl, bool videoOutput) {
  if (videoOutput) return Backend::VideoOut;
  const bool supported = gl != GLState::Unsupported;
  const bool recommended = gl == GLState::RecommendedAndSupported;
  if (mode == RENDER_MODE_AUTO && supported && recommended) return Backend::OpenGL;
  if (mode == RENDER_MODE_OPENGL && supported) return Backend::OpenGL;
  return Backend::Native;
}

std::string SelectionCaseName(
    const ::testing::TestParamInfo<std::tuple<int, GLState, bool>>& info) {
  const char* gl[] = {"GLRecommended", "GLSupportedOnly", "GLUnsupported"};
  const int mode = std::get<0>(info.param);
  return (mode < 0 ? "ModeMinus" + std::to_string(-mode) : "Mode" + std::to_string(mode)) + "_" +
         gl[static_cast<int>(std::get<1>(info.param))] +
         (std::get<2>(info.param) ? "_VideoOutput" : "_NoVideoOutput");
}

class Selection : public FacadeTest,
                  public ::testing::WithParamInterface<std::tuple<int, GLState, bool>> {};

TEST_P(Selection, ChoosesTheBackendTheRulesGive) {
  const auto [mode, gl, videoOutput] = GetParam();
  RunProbe(tile);
  ASSERT_TRUE(OpenGLRenderer::m_isSupported) << "this machine's GL should be usable";
  OpenGLRenderer::m_isSupported = gl != GLState::Unsupported;
  OpenGLRenderer::m_isRecommended = gl == GLState::RecommendedAndSupported;
  int deletions = 0;
  if (videoOutput) {
    CDecompressor::SetVideoOutputFactory(
        [&deletions] { return new RecordingVideoOutput(&deletions); });
  }

  TestRenderer* facade = MakeFacade(static_cast<RenderMode>(mode));

  const Backend expected = Expected(mode, gl, videoOutput);
  ASSERT_NE(nullptr, facade->m_renderer);
  EXPECT_EQ(facade->m_renderer, facade->m_primaryRenderer);
  EXPECT_EQ(NameOf(expected), NameOf(KindOf(facade->m_renderer)));
  EXPECT_EQ(expected == Backend::OpenGL ? RENDER_MODE_OPENGL : RENDER_MODE_SOFTWARE,
            facade->m_primaryMode);
  EXPECT_EQ(mode, facade->m_renderMode);
  EXPECT_EQ(expected == Backend::OpenGL ? 1u : 0u, CanvasesOn(tile).size());
}

INSTANTIATE_TEST_SUITE_P(
    ModesCapabilitiesAndVideoOutput, Selection,
    ::testing::Combine(::testing::Values(RENDER_MODE_AUTO, RENDER_MODE_SOFTWARE, RENDER_MODE_OPENGL,
                                         RENDER_MODE_RESERVED, -1, 7),
                       ::testing::Values(GLState::RecommendedAndSupported, GLState::SupportedOnly,
                                         GLState::Unsupported),
                       ::testing::Bool()),
    SelectionCaseName);

// A back-end that counts its own deletion.
class CountedBackend : public TestBackend {
 public:
  CountedBackend(wxWindow* parent, int* deletions) : TestBackend(parent), m_deletions(deletions) {}
  ~CountedBackend() override { ++*m_deletions; }

 private:
  int* m_deletions;
};

using Switch = FacadeTest;

TEST_F(Switch, ReservedAndOutOfRangeModesAreNeverSupported) {
  EXPECT_FALSE(Renderer::IsRenderModeSupported(RENDER_MODE_RESERVED));
  EXPECT_FALSE(Renderer::IsRenderModeSupported(static_cast<RenderMode>(-1)));
  EXPECT_FALSE(Renderer::IsRenderModeSupported(static_cast<RenderMode>(4)));
  EXPECT_TRUE(Renderer::IsRenderModeSupported(RENDER_MODE_AUTO));
  EXPECT_TRUE(Renderer::IsRenderModeSupported(RENDER_MODE_SOFTWARE));
}

TEST_F(Switch, OpenGLIsSupportedOnlyWithGLAndWithoutAVideoOutput) {
  RunProbe(tile);
  OpenGLRenderer::m_isSupported = true;
  EXPECT_TRUE(Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL));
  OpenGLRenderer::m_isSupported = false;
  EXPECT_FALSE(Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL));
  OpenGLRenderer::m_isSupported = true;
  int deletions = 0;
  CDecompressor::SetVideoOutputFactory(
      [&deletions] { return new RecordingVideoOutput(&deletions); });
  EXPECT_FALSE(Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL));
}

TEST_F(Switch, ReservedOrOutOfRangeRequestStillReturnsTrue) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  for (int mode : {int{RENDER_MODE_RESERVED}, -1, 7}) {
    EXPECT_TRUE(facade->SetRenderMode(static_cast<RenderMode>(mode)));
    EXPECT_EQ(Backend::Native, KindOf(facade->m_renderer));
    EXPECT_EQ(RENDER_MODE_SOFTWARE, facade->m_primaryMode);
  }
}

TEST_F(Switch, SameModeAgainChangesNothing) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  IRenderer* backend = facade->m_renderer;
  IRendererImage* image = facade->CreateImage(SolidImage(wxSize(4, 4), *wxRED));
  wxMemoryDC dc;
  wxBitmap bitmap(8, 8);
  dc.SelectObject(bitmap);
  facade->DrawImage(&dc, image, 0, 0);
  ASSERT_EQ(1u, facade->m_images.front()->m_backendImages.count(backend));

  EXPECT_TRUE(facade->SetRenderMode(RENDER_MODE_SOFTWARE));
  EXPECT_EQ(backend, facade->m_renderer);
  EXPECT_EQ(1u, facade->m_images.size());
  EXPECT_EQ(1u, facade->m_images.front()->m_backendImages.count(backend));
  dc.SelectObject(wxNullBitmap);
}

TEST_F(Switch, OldBackendLivesUntilTheNextIdleTime) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  int deletions = 0;
  facade->InstallBackend(new CountedBackend(tile, &deletions), RENDER_MODE_SOFTWARE);
  facade->SetRenderMode(RENDER_MODE_AUTO);
  EXPECT_EQ(0, deletions) << "deleted before the idle time";
  PumpEvents();
  EXPECT_EQ(1, deletions);
}

TEST_F(Switch, ReplacedGLCanvasStaysUntilIdleAndThenGoes) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
  ASSERT_EQ(Backend::OpenGL, KindOf(facade->m_renderer));
  ASSERT_EQ(1u, CanvasesOn(tile).size());
  facade->SetRenderMode(RENDER_MODE_SOFTWARE);
  EXPECT_EQ(Backend::Native, KindOf(facade->m_renderer));
  EXPECT_EQ(1u, CanvasesOn(tile).size()) << "the old back-end's canvas went at once";
  PumpEvents();
  EXPECT_EQ(0u, CanvasesOn(tile).size());
}

TEST_F(Switch, DestructionDeletesTheBackendAtOnce) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  int deletions = 0;
  facade->InstallBackend(new CountedBackend(tile, &deletions), RENDER_MODE_SOFTWARE);
  DestroyFacade(facade);
  EXPECT_EQ(1, deletions);
}

TEST_F(Switch, DestructionInFallbackDeletesBothBackends) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
  facade->SoftwareFallback(true);
  ASSERT_TRUE(facade->IsInSoftwareFallback());
  DestroyFacade(facade);
  PumpEvents();
  EXPECT_EQ(0u, CanvasesOn(tile).size());
}

TEST_F(Switch, SwitchInFallbackDeletesThePrimaryAtOnce) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
  facade->SoftwareFallback(true);
  ASSERT_EQ(1u, CanvasesOn(tile).size());
  facade->SetRenderMode(RENDER_MODE_SOFTWARE);
  EXPECT_EQ(0u, CanvasesOn(tile).size()) << "the primary GL back-end should go at once";
  EXPECT_FALSE(facade->IsInSoftwareFallback());
}

TEST_F(Switch, NewBackendKeepsTheFacadeAsOverlayHandler) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  int calls = 0;
  IRenderer* painter = nullptr;
  OverlayFunction host([&](IRenderer* renderer, wxDC*) {
    ++calls;
    painter = renderer;
  });
  facade->SetDrawOverlaysHandler(&host);
  facade->SetRenderMode(RENDER_MODE_AUTO);
  wxMemoryDC dc;
  wxBitmap bitmap(8, 8);
  dc.SelectObject(bitmap);
  facade->Render(&dc);
  dc.SelectObject(wxNullBitmap);
  EXPECT_EQ(1, calls);
  EXPECT_EQ(facade->m_renderer, painter) << "the host sees the painting back-end";
}

TEST_F(Switch, RelayWithoutAHandlerDoesNothing) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  EXPECT_EQ(nullptr, facade->m_drawOverlaysHandler);
  facade->RendererDrawOverlays(facade->m_renderer, nullptr);
  int calls = 0;
  OverlayFunction host([&](IRenderer*, wxDC*) { ++calls; });
  facade->SetDrawOverlaysHandler(&host);
  facade->RendererDrawOverlays(facade->m_renderer, nullptr);
  EXPECT_EQ(1, calls);
}

TEST_F(Switch, SettingsSurviveASwitch) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
  ASSERT_EQ(Backend::OpenGL, KindOf(facade->m_renderer));
  facade->SetAspectRatio(1.5f);
  facade->SetIgnoreAspectRatio(true);
  facade->SetDestinationRect(wxRect(3, 4, 50, 60));
  facade->SetOpacity(99);
  facade->GetPtz()->SetPanTiltZoom(0.25f, -0.5f, 2.0f);
  facade->GetPtz()->enabled = true;
  facade->SetRenderMode(RENDER_MODE_SOFTWARE);
  ASSERT_EQ(Backend::Native, KindOf(facade->m_renderer));
  EXPECT_FLOAT_EQ(1.5f, facade->GetAspectRatio());
  EXPECT_TRUE(facade->GetIgnoreAspectRatio());
  EXPECT_EQ(wxRect(3, 4, 50, 60), facade->GetDestinationRect());
  EXPECT_EQ(99, facade->GetOpacity());
  float pan = 0;
  float tilt = 0;
  float zoom = 0;
  facade->GetPtz()->GetPanTiltZoom(pan, tilt, zoom);
  EXPECT_FLOAT_EQ(0.25f, pan);
  EXPECT_FLOAT_EQ(-0.5f, tilt);
  EXPECT_FLOAT_EQ(2.0f, zoom);
  EXPECT_TRUE(facade->GetPtz()->IsActive()) << "the view stays zoomed";
}

// The automatic fallback and the way back carry the zoom of the back-end's own PTZ too.
TEST_F(Switch, AZoomedViewStaysZoomedThroughFallbackAndBack) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
  ASSERT_EQ(Backend::OpenGL, KindOf(facade->m_renderer));
  facade->GetPtz()->SetPanTiltZoom(-0.5f, 0.5f, 4.0f);
  facade->GetPtz()->enabled = true;
  facade->ForceSoftwareMode(true);
  ASSERT_EQ(Backend::Native, KindOf(facade->m_renderer));
  EXPECT_TRUE(facade->GetPtz()->IsActive());
  facade->ForceSoftwareMode(false);
  ASSERT_EQ(Backend::OpenGL, KindOf(facade->m_renderer));
  EXPECT_TRUE(facade->GetPtz()->IsActive());
  float pan = 0;
  float tilt = 0;
  float zoom = 0;
  facade->GetPtz()->GetPanTiltZoom(pan, tilt, zoom);
  EXPECT_FLOAT_EQ(4.0f, zoom);
}

TEST_F(Switch, DescriptionsComeFromTheRegistry) {
  RendererBase::ClearRendererDesc(RENDER_MODE_RESERVED);
  EXPECT_EQ("", Renderer::GetRendererDesc(RENDER_MODE_RESERVED));
  RendererBase::AppendRendererDesc(RENDER_MODE_RESERVED, "line");
  EXPECT_EQ("line", Renderer::GetRendererDesc(RENDER_MODE_RESERVED));
  RunProbe(tile);
  EXPECT_FALSE(Renderer::GetRendererDesc(RENDER_MODE_OPENGL).empty());
}

// Without a parent there is no window for a GL canvas: the facade settles on software.
TEST_F(Switch, NullParentGetsTheSoftwareBackend) {
  auto facade = std::make_unique<TestRenderer>(nullptr, RENDER_MODE_OPENGL);
  EXPECT_EQ(Backend::Native, KindOf(facade->m_renderer));
  EXPECT_EQ(RENDER_MODE_SOFTWARE, facade->m_primaryMode);
}

}  // namespace

namespace {

// The tile window goes while its replaced GL back-end still waits for idle-time deletion (a
// host closing a tile right after a mode switch): the back-end lets go of its canvas and GL
// objects with the window and later goes without touching either.
TEST_F(Switch, ReplacedGLBackendOutlivesItsTile) {
  wxWindow* closing = MakeTile(wxPoint(220, 10), wxSize(80, 60));
  TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL, closing);
  ASSERT_EQ(Backend::OpenGL, KindOf(facade->m_renderer));
  int frames = 0;
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  if (facade->GetFrameBuffer(64, 48, PIXEL_FORMAT_I420, planes, pitches)) ++frames;
  facade->FlushFrameBuffer(planes, pitches);
  facade->Render(nullptr);
  ASSERT_EQ(1, frames);
  facade->SetRenderMode(RENDER_MODE_SOFTWARE);
  DestroyFacade(facade);
  closing->Destroy();
  PumpEvents();
  // The next GL back-end works as before: the shared canvas and context are still sound.
  TestRenderer* next = MakeFacade(RENDER_MODE_OPENGL);
  ASSERT_EQ(Backend::OpenGL, KindOf(next->m_renderer));
  EXPECT_TRUE(next->GetFrameBuffer(64, 48, PIXEL_FORMAT_I420, planes, pitches));
  next->FlushFrameBuffer(planes, pitches);
  next->Render(nullptr);
  EXPECT_TRUE(next->HasFrame());
}

TEST_F(Switch, GLBackendWithoutAParentHasNoCanvasAndDrawsNothing) {
  OpenGLRenderer orphan(nullptr);
  EXPECT_FALSE(orphan.HasContext());
  orphan.Render(nullptr);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  EXPECT_FALSE(orphan.GetFrameBuffer(64, 48, PIXEL_FORMAT_I420, planes, pitches));
}

}  // namespace
