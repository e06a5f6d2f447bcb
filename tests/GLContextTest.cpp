// Canvas and context lifecycle: the shared first canvas and context, object sharing between
// renderers, making contexts current, the destruction orders and shared-context mode.
#include <GL/gl.h>

#include <algorithm>

#include <renderer/InternalGLCanvas.h>
#include <renderer/OpenGLImage.h>

#include "GLTest.h"

namespace {

const wxColour kSecondTileColour(200, 120, 40);
const wxColour kTextureColour(0, 255, 0);

// A 2 x 2 texture of one colour, made in the current context.
GLuint MakeTexture(const wxColour& colour) {
  GLuint texture = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  const unsigned char texel[] = {colour.Red(), colour.Green(), colour.Blue(), 255};
  const unsigned char texels[16] = {texel[0], texel[1], texel[2], texel[3], texel[0], texel[1],
                                    texel[2], texel[3], texel[0], texel[1], texel[2], texel[3],
                                    texel[0], texel[1], texel[2], texel[3]};
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glBindTexture(GL_TEXTURE_2D, 0);
  return texture;
}

// Draws `texture` over `rect` in the current context, in the renderer's pixel coordinates.
void DrawTexture(GLuint texture, const wxRect& rect) {
  glEnable(GL_TEXTURE_2D);
  glBindTexture(GL_TEXTURE_2D, texture);
  glColor4f(1, 1, 1, 1);
  glBegin(GL_QUADS);
  glTexCoord2f(0, 0);
  glVertex2f(rect.x - 0.5f, rect.y - 0.5f);
  glTexCoord2f(1, 0);
  glVertex2f(rect.GetRight() + 0.5f, rect.y - 0.5f);
  glTexCoord2f(1, 1);
  glVertex2f(rect.GetRight() + 0.5f, rect.GetBottom() + 0.5f);
  glTexCoord2f(0, 1);
  glVertex2f(rect.x - 0.5f, rect.GetBottom() + 0.5f);
  glEnd();
  glBindTexture(GL_TEXTURE_2D, 0);
  glDisable(GL_TEXTURE_2D);
}

int CanvasesOn(wxWindow* parent) {
  int canvases = 0;
  for (wxWindow* child : parent->GetChildren()) {
    canvases += dynamic_cast<InternalGLCanvas*>(child) ? 1 : 0;
  }
  return canvases;
}

class Lifecycle : public GLTest {
 protected:
  void SetUp() override {
    GLTest::SetUp();
    secondTile = MakeTile(wxPoint(220, 10), wxSize(80, 60));
    secondTile->SetBackgroundColour(kSecondTileColour);
  }

  // The current context as the window system knows it, after `renderer` made its own current.
  static const void* ContextOf(GLTestRenderer* renderer) {
    renderer->SetCurrent();
    return CurrentContext();
  }

  // A texture made in the renderer's context and listed among its frame textures.
  static GLuint GiveFrameTexture(GLTestRenderer* renderer) {
    renderer->SetCurrent();
    const GLuint texture = MakeTexture(kTextureColour);
    renderer->m_textures.push_back(texture);
    return texture;
  }

  // Paints `renderer` and checks that it drew its tile's colour everywhere.
  ::testing::AssertionResult PaintsItsBackground(GLTestRenderer* renderer) {
    const wxWindow* parent = renderer->GetParent();
    return ImagesNear(
        Paint(renderer), SolidImage(parent->GetClientSize(), parent->GetBackgroundColour()),
        kExactPixels, ::testing::UnitTest::GetInstance()->current_test_info()->name());
  }

  wxWindow* secondTile = nullptr;
};

}  // namespace

TEST_F(Lifecycle, FirstRendererOwnsTheSharedCanvasAndContext) {
  GLTestRenderer* renderer = MakeRenderer();
  ASSERT_TRUE(renderer->HasContext());
  EXPECT_EQ(OpenGLRenderer::m_sharedCanvas, renderer->m_canvas);
  EXPECT_EQ(OpenGLRenderer::m_sharedContext, renderer->m_context);
  InternalGLCanvas* canvas = renderer->m_canvas;
  EXPECT_EQ(tile, canvas->GetParent());
  EXPECT_EQ("OpenGL", canvas->GetName());
  EXPECT_TRUE(canvas->HasFlag(wxTRANSPARENT_WINDOW));
  EXPECT_TRUE(canvas->HasFlag(wxFULL_REPAINT_ON_RESIZE));
  EXPECT_TRUE(renderer->IsContextReady(true));
  EXPECT_TRUE(renderer->IsContextReady(false));
  EXPECT_TRUE(PaintsItsBackground(renderer));
}

TEST_F(Lifecycle, SecondRendererHasItsOwnContextSharingObjectsWithTheFirst) {
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer(secondTile);
  EXPECT_NE(first->m_context, second->m_context);
  EXPECT_EQ(first->m_context, OpenGLRenderer::m_sharedContext);
  EXPECT_EQ(first->m_canvas, OpenGLRenderer::m_sharedCanvas);
  EXPECT_NE(ContextOf(first), ContextOf(second));

  ContextOf(first);
  const GLuint texture = MakeTexture(kTextureColour);
  const wxRect area(5, 6, 30, 20);
  OverlayFunction drawTexture([&](IRenderer*, wxDC*) {
    EXPECT_EQ(GL_TRUE, glIsTexture(texture));
    DrawTexture(texture, area);
  });
  second->SetDrawOverlaysHandler(&drawTexture);
  wxImage expected = SolidImage(secondTile->GetClientSize(), kSecondTileColour);
  expected.SetRGB(area, kTextureColour.Red(), kTextureColour.Green(), kTextureColour.Blue());
  EXPECT_TRUE(ImagesNear(Paint(second), expected, kExactPixels, "shared-texture"));

  // A context that shares nothing with the first does not know the texture: the sharing is
  // what makes it valid in the second renderer.
  wxGLContext loner(second->m_canvas);
  loner.SetCurrent(*second->m_canvas);
  EXPECT_EQ(GL_FALSE, glIsTexture(texture));
  ContextOf(first);
  glDeleteTextures(1, &texture);
}

// After the probe, a renderer re-binds its context even when its canvas was the last one made
// current through it: someone else may have made another context current meanwhile.
TEST_F(Lifecycle, SetCurrentRebindsEveryTime) {
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer(secondTile);
  const void* firstContext = ContextOf(first);
  second->m_context->SetCurrent(*second->m_canvas);
  ASSERT_NE(firstContext, CurrentContext());
  first->SetCurrent();
  EXPECT_EQ(firstContext, CurrentContext());
}

TEST_F(Lifecycle, HiddenCanvasIsNeverMadeCurrent) {
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer(secondTile);
  const void* secondContext = ContextOf(second);
  first->m_canvas->Hide();
  EXPECT_FALSE(first->IsContextReady(true));
  EXPECT_TRUE(first->IsContextReady(false));
  first->SetCurrent();
  EXPECT_EQ(secondContext, CurrentContext());
  first->m_canvas->Show();
  first->SetCurrent();
  EXPECT_NE(secondContext, CurrentContext());
}

TEST_F(Lifecycle, FirstRendererDiesWhileASecondLives) {
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer(secondTile);
  InternalGLCanvas* sharedCanvas = first->m_canvas;
  wxGLContext* sharedContext = first->m_context;
  first->SetCurrent();
  const GLuint texture = MakeTexture(kTextureColour);

  DestroyRenderer(first);
  EXPECT_EQ(sharedContext, OpenGLRenderer::m_sharedContext);
  EXPECT_EQ(sharedCanvas, OpenGLRenderer::m_sharedCanvas);
  EXPECT_FALSE(sharedCanvas->IsShown());
  EXPECT_EQ(nullptr, sharedCanvas->GetParent());
  EXPECT_EQ(0, CanvasesOn(tile));
  EXPECT_TRUE(PaintsItsBackground(second));
  second->SetCurrent();
  EXPECT_EQ(GL_TRUE, glIsTexture(texture)) << "objects of the shared context survive";

  // The tile that held the detached canvas may go first; the canvas still goes cleanly later.
  tile->Destroy();
  tile = nullptr;
  PumpEvents();
  EXPECT_TRUE(PaintsItsBackground(second));
  second->SetCurrent();
  glDeleteTextures(1, &texture);

  DestroyRenderer(second);
  EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedContext);
  EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedCanvas);
  EXPECT_EQ(0, CanvasesOn(secondTile));
}

// The first renderer's canvas outlives it (hidden, detached), but its window goes with the
// tile's. Left the current drawable, it would be made current again by the next tile's
// clean-up (which restores what was current) and the X server asked about a window that no
// longer exists: an error the toolkit ends the program on. Each test starts with two
// renderers, the first one's context current on its canvas.
class FirstCanvasCurrent : public Lifecycle {
 protected:
  void SetUp() override {
    Lifecycle::SetUp();
    first = MakeRenderer();
    second = MakeRenderer(secondTile);
    window = first->m_canvas->GetXWindow();
    first->SetCurrent();
    ASSERT_EQ(window, CurrentDrawable());
  }

  GLTestRenderer* first = nullptr;
  GLTestRenderer* second = nullptr;
  unsigned long window = 0;
};

TEST_F(FirstCanvasCurrent, IsNotLeftCurrentWhenTheRendererGoes) {
  DestroyRenderer(first);
  EXPECT_NE(window, CurrentDrawable());
  tile->Destroy();
  tile = nullptr;
  DestroyRenderer(second);
  PumpEvents();
  EXPECT_EQ(0u, CurrentDrawable());
}

TEST_F(FirstCanvasCurrent, IsNotLeftCurrentWhenItsTileGoes) {
  tile->Destroy();  // the renderer lets go of its canvas as the tile goes
  tile = nullptr;
  EXPECT_NE(window, CurrentDrawable());
  EXPECT_TRUE(PaintsItsBackground(second));
}

TEST_F(Lifecycle, SecondRendererDiesBeforeTheFirst) {
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer(secondTile);
  DestroyRenderer(second);
  EXPECT_EQ(0, CanvasesOn(secondTile));
  EXPECT_EQ(first->m_context, OpenGLRenderer::m_sharedContext);
  EXPECT_EQ(first->m_canvas, OpenGLRenderer::m_sharedCanvas);
  EXPECT_TRUE(PaintsItsBackground(first));
}

TEST_F(Lifecycle, LastRendererReleasesTheSharedCanvasAndContext) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->Render(nullptr);
  ASSERT_NE(wxRect(), renderer->m_viewport);
  DestroyRenderer(renderer);
  EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedContext);
  EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedCanvas);
  EXPECT_EQ(0, CanvasesOn(tile));
  EXPECT_TRUE(tile->GetChildren().empty());
}

TEST_F(Lifecycle, RendererAfterAllWereDestroyedStartsANewCycleWithoutProbing) {
  DestroyRenderer(MakeRenderer());
  RendererBase::ClearRendererDesc(RENDER_MODE_OPENGL);
  LogCapture log;
  GLTestRenderer* renderer = MakeRenderer(secondTile);
  EXPECT_EQ(renderer->m_canvas, OpenGLRenderer::m_sharedCanvas);
  EXPECT_EQ(renderer->m_context, OpenGLRenderer::m_sharedContext);
  EXPECT_EQ("", RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_TRUE(PaintsItsBackground(renderer));
}

TEST_F(Lifecycle, DestroyingARendererWhoseParentIsHidden) {
  GLTestRenderer* renderer = MakeRenderer();
  GLTestRenderer* witness = MakeRenderer(secondTile);
  const GLuint texture = GiveFrameTexture(renderer);
  tile->Hide();
  std::vector<bool> shows;
  auto onShow = [&shows](wxShowEvent& event) {
    shows.push_back(event.IsShown());
    event.Skip();
  };
  tile->Bind(wxEVT_SHOW, onShow);
  DestroyRenderer(renderer);
  tile->Unbind(wxEVT_SHOW, onShow);
  EXPECT_EQ((std::vector<bool>{true, false}), shows);
  EXPECT_FALSE(tile->IsShown());
  witness->SetCurrent();
  EXPECT_EQ(GL_FALSE, glIsTexture(texture)) << "the clean-up ran with a context current";
}

// Deletes run in the renderer's share group whatever the host has current, also while the
// renderer's canvas is hidden (as while the software back-end stands in for it): the host's
// own context keeps its objects of the same names, and is current again afterwards.
TEST_F(Lifecycle, DeletesOfAHiddenRendererSpareTheHostsContext) {
  GLTestRenderer* renderer = MakeRenderer();
  const GLuint texture = GiveFrameTexture(renderer);
  auto* image = dynamic_cast<OpenGLImage*>(renderer->CreateImage(wxImage(8, 8)));
  ASSERT_NE(nullptr, image);
  const GLuint imageTexture = image->GetTexture();
  renderer->m_canvas->Hide();
  auto* hostCanvas = new wxGLCanvas(secondTile, wxID_ANY, nullptr, wxPoint(0, 0), wxSize(40, 30));
  ASSERT_TRUE(ShowAndWaitForPaint(hostCanvas));
  wxGLContext hostContext(hostCanvas);
  ASSERT_TRUE(hostContext.SetCurrent(*hostCanvas));
  const void* host = CurrentContext();
  std::vector<GLuint> hostTextures;
  while (hostTextures.size() <= std::max(texture, imageTexture)) {
    hostTextures.push_back(MakeTexture(kTextureColour));
  }
  renderer->ClearFrame();
  renderer->DeleteImage(image);
  EXPECT_EQ(host, CurrentContext());
  for (const GLuint name : hostTextures) EXPECT_TRUE(glIsTexture(name)) << "host texture " << name;
  renderer->m_canvas->Show();
  renderer->SetCurrent();
  EXPECT_FALSE(glIsTexture(texture));
  EXPECT_FALSE(glIsTexture(imageTexture));
}

// With no context current at all, a renderer with a hidden canvas still deletes its objects
// (they would otherwise stay in the share group the other renderers keep alive), and leaves
// no context current.
TEST_F(Lifecycle, DestroyingAHiddenRendererWithNoContextCurrentDeletesItsObjects) {
  GLTestRenderer* renderer = MakeRenderer();
  GLTestRenderer* witness = MakeRenderer(secondTile);
  const GLuint texture = GiveFrameTexture(renderer);
  renderer->m_canvas->Hide();
  ReleaseCurrentContext();
  DestroyRenderer(renderer);
  EXPECT_EQ(nullptr, CurrentContext());
  witness->SetCurrent();
  EXPECT_FALSE(glIsTexture(texture));
}

TEST_F(Lifecycle, ShownParentIsNotShownAgainDuringCleanUp) {
  GLTestRenderer* renderer = MakeRenderer();
  int shows = 0;
  auto onShow = [&shows](wxShowEvent& event) {
    ++shows;
    event.Skip();
  };
  tile->Bind(wxEVT_SHOW, onShow);
  DestroyRenderer(renderer);
  tile->Unbind(wxEVT_SHOW, onShow);
  EXPECT_EQ(0, shows);
  EXPECT_TRUE(tile->IsShown());
}

TEST_F(Lifecycle, UnsupportedRendererHasNoCanvasAndDrawsNothing) {
  OpenGLRenderer::m_isSupported = false;
  bool overlaysDrawn = false;
  OverlayFunction overlays([&overlaysDrawn](IRenderer*, wxDC*) { overlaysDrawn = true; });
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetDrawOverlaysHandler(&overlays);
  EXPECT_EQ(nullptr, renderer->m_canvas);
  EXPECT_EQ(nullptr, renderer->m_context);
  EXPECT_FALSE(renderer->HasContext());
  EXPECT_TRUE(renderer->IsContextReady(false));
  EXPECT_FALSE(renderer->IsContextReady(true));
  EXPECT_EQ(0, CanvasesOn(tile));
  renderer->SetCurrent();
  renderer->SwapBuffers();
  renderer->Render(nullptr);
  tile->SetSize(wxSize(120, 90));
  EXPECT_FALSE(overlaysDrawn);
  EXPECT_EQ(0, renderer->paints);
  EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedContext);
  DestroyRenderer(renderer);
}

TEST_F(Lifecycle, SharedContextModeUsesTheOneContextForEveryRenderer) {
  OpenGLRenderer::m_isSharedContext = true;
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer(secondTile);
  EXPECT_EQ(OpenGLRenderer::m_sharedContext, first->m_context);
  EXPECT_EQ(OpenGLRenderer::m_sharedContext, second->m_context);
  EXPECT_EQ(first->m_canvas, OpenGLRenderer::m_sharedCanvas);
  EXPECT_TRUE(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL)
                  .EndsWith("OpenGL Capabilities - Shared Context: Yes"));

  EXPECT_TRUE(PaintsItsBackground(first));
  EXPECT_EQ(wxRect(0, 0, kTileWidth, kTileHeight), OpenGLRenderer::m_sharedViewport);
  EXPECT_TRUE(PaintsItsBackground(second));
  EXPECT_EQ(wxRect(0, 0, 80, 60), OpenGLRenderer::m_sharedViewport);
  EXPECT_EQ(wxRect(0, 0, 80, 60), CurrentViewport());
  EXPECT_TRUE(PaintsItsBackground(first));

  DestroyRenderer(first);
  EXPECT_EQ(second->m_context, OpenGLRenderer::m_sharedContext);
  EXPECT_TRUE(PaintsItsBackground(second));
  DestroyRenderer(second);
  EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedContext);
  EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedCanvas);
  EXPECT_EQ(wxRect(), OpenGLRenderer::m_sharedViewport);
}

// In shared-context mode the one viewport record decides, so a renderer asking for the
// rectangle another one set calls no glViewport and keeps its own record.
TEST_F(Lifecycle, SharedContextModeComparesTheSharedViewport) {
  OpenGLRenderer::m_isSharedContext = true;
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer(secondTile);
  first->SetCurrent();
  first->UpdateViewport(wxRect(0, 0, 50, 40));
  second->SetCurrent();
  glViewport(1, 2, 3, 4);
  second->UpdateViewport(wxRect(0, 0, 50, 40));
  EXPECT_EQ(wxRect(1, 2, 3, 4), CurrentViewport());
  EXPECT_EQ(wxRect(), second->m_viewport);
}

TEST_F(Lifecycle, SwitchToMultipleContextsGivesTheRendererANewContextAndCanvas) {
  OpenGLRenderer::m_isSharedContext = true;
  GLTestRenderer* renderer = MakeRenderer();
  InternalGLCanvas* oldCanvas = renderer->m_canvas;
  wxGLContext* oldContext = renderer->m_context;

  OpenGLRenderer::m_isSharedContext = false;
  renderer->SwitchToMultipleContexts();
  EXPECT_TRUE(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL)
                  .EndsWith("\nOpenGL Information - Switching to multiple contexts due to known "
                            "driver issues."));
  EXPECT_NE(oldCanvas, renderer->m_canvas);
  EXPECT_NE(oldContext, renderer->m_context);
  EXPECT_EQ(renderer->m_context, OpenGLRenderer::m_sharedContext);
  EXPECT_EQ(renderer->m_canvas, OpenGLRenderer::m_sharedCanvas);
  EXPECT_EQ(1, CanvasesOn(tile));

  wxSizeEvent resize(tile->GetClientSize());
  renderer->OnSize(resize);
  Settle(renderer);
  EXPECT_TRUE(PaintsItsBackground(renderer));
  GLTestRenderer* second = MakeRenderer(secondTile);
  EXPECT_NE(renderer->m_context, second->m_context);
  EXPECT_TRUE(PaintsItsBackground(second));
}

TEST_F(Lifecycle, ManyRenderersComeAndGo) {
  for (int cycle = 0; cycle < 4; ++cycle) {
    std::vector<GLTestRenderer*> live;
    for (int index = 0; index < 3; ++index) {
      live.push_back(MakeRenderer(index % 2 ? secondTile : tile));
      live.back()->Render(nullptr);
    }
    for (GLTestRenderer* renderer : live) DestroyRenderer(renderer);
    EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedContext);
    EXPECT_EQ(nullptr, OpenGLRenderer::m_sharedCanvas);
  }
  EXPECT_TRUE(tile->GetChildren().empty());
  EXPECT_TRUE(secondTile->GetChildren().empty());
}

// Hosts build their tiles before the top-level window is first shown: the first renderer
// still probes the driver (on the canvas's realised, unmapped window), and paints once shown.
TEST(LifecycleBeforeShow, RendererOnAWindowNotShownYetProbesAndLaterPaints) {
  RendererBase::ClearRendererDesc(RENDER_MODE_OPENGL);
  auto* top = new wxFrame(nullptr, wxID_ANY, "not shown yet", wxPoint(0, 0), wxDefaultSize);
  top->SetClientSize(160, 120);
  auto* tileNotShown = new wxWindow(top, wxID_ANY, wxPoint(0, 0), wxSize(160, 120));
  tileNotShown->SetBackgroundColour(kSecondTileColour);
  {
    GLTestRenderer renderer(tileNotShown);
    EXPECT_TRUE(OpenGLRenderer::m_isShaderSupported);
    EXPECT_GE(OpenGLRenderer::m_maxTextureSize.x, 256);
    EXPECT_TRUE(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL)
                    .Contains("OpenGL Capabilities - Shaders Supported: Yes"));

    ASSERT_TRUE(ShowAndWaitForPaint(top));
    ASSERT_TRUE(PumpUntil([&] { return WindowHasSize(renderer.m_canvas, wxSize(160, 120)); }));
    renderer.SwapBuffers();  // llvmpipe takes a window's new size at a swap
    renderer.Render(nullptr);
    EXPECT_TRUE(ImagesNear(renderer.drawn, SolidImage(wxSize(160, 120), kSecondTileColour),
                           kExactPixels, "RendererOnAWindowNotShownYet"));
  }
  top->Destroy();
  PumpEvents();
}

// A frame is lent and uploaded in the renderer's own context, whichever tile's context was
// current before: Mesa's rasteriser crashed drawing textures that another context had filled.
TEST_F(Lifecycle, FramesAreUploadedInTheRenderersOwnContext) {
  GLTestRenderer* first = MakeRenderer();
  GLTestRenderer* second = MakeRenderer(secondTile);
  const void* firstContext = ContextOf(first);
  const void* secondContext = ContextOf(second);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_EQ(secondContext, CurrentContext());
  ASSERT_TRUE(first->GetFrameBuffer(64, 48, PIXEL_FORMAT_I420, planes, pitches));
  EXPECT_EQ(firstContext, CurrentContext());
  second->SetCurrent();
  first->FlushFrameBuffer(planes, pitches);
  EXPECT_EQ(firstContext, CurrentContext());

  // Alternating tiles, frame after frame, draw without fault.
  for (int frame = 0; frame < 100; ++frame) {
    for (GLTestRenderer* renderer : {first, second}) {
      ASSERT_TRUE(renderer->GetFrameBuffer(64, 48, PIXEL_FORMAT_I420, planes, pitches));
      renderer->FlushFrameBuffer(planes, pitches);
      renderer->Render(nullptr);
    }
  }
  EXPECT_TRUE(first->HasFrame());
  EXPECT_TRUE(second->HasFrame());
}
