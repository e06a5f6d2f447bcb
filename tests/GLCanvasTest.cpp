// The canvas and the draw bracket: sizing, viewport and projection, GL set-up at the first
// draw, clearing and swapping, tooltip and cursor mirroring and input forwarding.
#include <GL/gl.h>
#include <wx/dcmemory.h>
#include <wx/tooltip.h>

#include <renderer/InternalGLCanvas.h>

#include "GLTest.h"

namespace {

const char* const kVSyncOffLine = "Unable to disable vsync. Swap interval function not found.";

// GL keeps its matrices in single precision.
constexpr double kMatrixTolerance = 1e-6;

std::vector<double> Identity() { return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}; }

// Where a point in the renderer's coordinates lands in normalised device coordinates.
wxRealPoint Project(const std::vector<double>& matrix, double x, double y) {
  return wxRealPoint(matrix[0] * x + matrix[4] * y + matrix[12],
                     matrix[1] * x + matrix[5] * y + matrix[13]);
}

void ExpectMatrixNear(const std::vector<double>& expected, const std::vector<double>& actual) {
  ASSERT_EQ(expected.size(), actual.size());
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NEAR(expected[i], actual[i], kMatrixTolerance) << "element " << i;
  }
}

}  // namespace

TEST_F(GLTest, CanvasCoversTheParentFromTheStart) {
  GLTestRenderer renderer(tile);
  EXPECT_EQ(wxPoint(0, 0), renderer.m_canvas->GetPosition());
  EXPECT_EQ(tile->GetClientSize(), renderer.m_canvas->GetClientSize());
}

TEST_F(GLTest, CanvasFollowsTheParentsSizeAndTheParentStillSeesIt) {
  std::vector<wxSize> seenByTile;
  tile->Bind(wxEVT_SIZE, [&seenByTile](wxSizeEvent& event) {
    seenByTile.push_back(event.GetSize());
    event.Skip();
  });
  GLTestRenderer* renderer = MakeRenderer();
  tile->SetSize(wxSize(120, 90));
  EXPECT_EQ(wxSize(120, 90), renderer->m_canvas->GetClientSize());
  ASSERT_FALSE(seenByTile.empty());
  EXPECT_EQ(wxSize(120, 90), seenByTile.back());
  Settle(renderer);
  EXPECT_TRUE(ImagesNear(Paint(renderer), SolidImage(wxSize(120, 90), kTileColour), kExactPixels,
                         "resized"));
}

TEST_F(GLTest, ParentWithoutAreaLeavesTheCanvasAsItIs) {
  GLTestRenderer* renderer = MakeRenderer();
  tile->SetSize(wxSize(0, 0));
  ASSERT_EQ(wxSize(0, 0), tile->GetClientSize());
  EXPECT_EQ(wxSize(kTileWidth, kTileHeight), renderer->m_canvas->GetClientSize());
  tile->SetSize(wxSize(0, 40));
  EXPECT_EQ(wxSize(kTileWidth, kTileHeight), renderer->m_canvas->GetClientSize());
}

TEST_F(GLTest, ViewportAndProjectionAfterOnBeforeDraw) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->OnBeforeDraw(nullptr);
  EXPECT_EQ(wxRect(0, 0, kTileWidth, kTileHeight), CurrentViewport());
  EXPECT_EQ(wxRect(0, 0, kTileWidth, kTileHeight), renderer->m_viewport);
  EXPECT_EQ(wxRect(0, 0, kTileWidth, kTileHeight), renderer->m_ortho);
  const std::vector<double> projection = CurrentProjection();
  const wxRealPoint topLeft = Project(projection, 0, 0);
  const wxRealPoint bottomRight = Project(projection, kTileWidth - 1, kTileHeight - 1);
  EXPECT_NEAR(-1.0, topLeft.x, kMatrixTolerance);
  EXPECT_NEAR(1.0, topLeft.y, kMatrixTolerance);
  EXPECT_NEAR(1.0, bottomRight.x, kMatrixTolerance);
  EXPECT_NEAR(-1.0, bottomRight.y, kMatrixTolerance);
  ExpectMatrixNear(Identity(), CurrentModelView());
  GLint mode = 0;
  glGetIntegerv(GL_MATRIX_MODE, &mode);
  EXPECT_EQ(GL_MODELVIEW, mode);
}

TEST_F(GLTest, PaintWithADeviceContextUsesItsSize) {
  GLTestRenderer* renderer = MakeRenderer();
  wxBitmap bitmap(64, 48);
  wxMemoryDC dc(bitmap);
  renderer->Render(&dc);
  renderer->SetCurrent();
  EXPECT_EQ(wxRect(0, 0, 64, 48), CurrentViewport());
  EXPECT_EQ(wxRect(0, 0, 64, 48), renderer->m_ortho);
}

TEST_F(GLTest, SameViewportTwiceCallsGlViewportOnce) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  renderer->UpdateViewport(wxRect(0, 0, 100, 80));
  EXPECT_EQ(wxRect(0, 0, 100, 80), CurrentViewport());
  glViewport(1, 2, 3, 4);  // behind the renderer's back: shows whether it calls glViewport
  renderer->UpdateViewport(wxRect(0, 0, 100, 80));
  EXPECT_EQ(wxRect(1, 2, 3, 4), CurrentViewport());
  renderer->UpdateViewport(wxRect(0, 0, 100, 81));
  EXPECT_EQ(wxRect(0, 0, 100, 81), CurrentViewport());
  EXPECT_EQ(wxRect(0, 0, 100, 81), renderer->m_viewport);
}

TEST_F(GLTest, ChangedViewportReloadsAnUnchangedProjection) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  const wxRect area(0, 0, 100, 80);
  renderer->UpdateViewport(area);
  renderer->UpdateOrtho(area);
  const std::vector<double> ortho = CurrentProjection();
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  renderer->UpdateOrtho(area);
  ExpectMatrixNear(Identity(), CurrentProjection());  // same rectangle: not reloaded
  renderer->UpdateViewport(wxRect(0, 0, 50, 40));
  EXPECT_EQ(0, renderer->m_ortho.width);
  EXPECT_EQ(0, renderer->m_ortho.height);
  renderer->UpdateOrtho(area);
  ExpectMatrixNear(ortho, CurrentProjection());
}

TEST_F(GLTest, OrthoMapsTheLastPixelToTheEdges) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  renderer->UpdateOrtho(wxRect(0, 0, 640, 480));
  // gluOrtho2D(left 0, right 639, bottom 479, top 0).
  ExpectMatrixNear({2.0 / 639, 0, 0, 0, 0, -2.0 / 479, 0, 0, 0, 0, -1, 0, -1, 1, 0, 1},
                   CurrentProjection());
  const std::vector<double> projection = CurrentProjection();
  EXPECT_NEAR(1.0, Project(projection, 639, 479).x, kMatrixTolerance);
  EXPECT_NEAR(-1.0, Project(projection, 639, 479).y, kMatrixTolerance);
  ExpectMatrixNear(Identity(), CurrentModelView());
}

TEST_F(GLTest, OrthoOfAnOffsetRectangle) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  renderer->UpdateOrtho(wxRect(10, 20, 101, 51));
  const std::vector<double> projection = CurrentProjection();
  EXPECT_NEAR(-1.0, Project(projection, 10, 20).x, kMatrixTolerance);
  EXPECT_NEAR(1.0, Project(projection, 10, 20).y, kMatrixTolerance);
  EXPECT_NEAR(1.0, Project(projection, 110, 70).x, kMatrixTolerance);
  EXPECT_NEAR(-1.0, Project(projection, 110, 70).y, kMatrixTolerance);
}

TEST_F(GLTest, FirstDrawSetsUpGLAndLogsTheVSyncRequestOnce) {
  LogCapture log;
  GLTestRenderer* renderer = MakeRenderer();
  EXPECT_FALSE(renderer->m_isGLInitialized);
  EXPECT_EQ(0, log.Count(kVSyncOffLine));
  renderer->SetCurrent();
  glEnable(GL_DEPTH_TEST);
  glEnable(GL_LIGHTING);
  renderer->Render(nullptr);
  renderer->Render(nullptr);
  EXPECT_TRUE(renderer->m_isGLInitialized);
  EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
  EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
  ASSERT_EQ(1, log.Count(kVSyncOffLine));
  for (const LogLine& line : log.Lines()) {
    if (line.text != kVSyncOffLine) continue;
    EXPECT_EQ(wxLOG_Info, line.level);
    EXPECT_EQ("renderer/OpenGLRenderer", line.file);
    EXPECT_EQ("EnableVSync", line.function);
  }
}

TEST_F(GLTest, EveryRendererLogsTheVSyncRequestAtItsFirstDraw) {
  LogCapture log;
  MakeRenderer()->Render(nullptr);
  MakeRenderer(MakeTile(wxPoint(220, 10), wxSize(50, 50)))->Render(nullptr);
  EXPECT_EQ(2, log.Count(kVSyncOffLine));
}

TEST_F(GLTest, VSyncRequestsAreOnlyLogged) {
  GLTestRenderer* renderer = MakeRenderer();
  LogCapture log;
  renderer->EnableVSync(true);
  renderer->EnableVSync(false);
  EXPECT_EQ((std::vector<std::string>{"Unable to enable vsync. Swap interval function not found.",
                                      kVSyncOffLine}),
            log.Texts());
  wxLog::SetVerbose(false);
  renderer->EnableVSync(true);
  wxLog::SetVerbose(true);
  EXPECT_EQ(2u, log.Lines().size());
}

TEST_F(GLTest, InitGLZeroesBothViewportRecords) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->Render(nullptr);
  OpenGLRenderer::m_sharedViewport = wxRect(1, 2, 3, 4);
  renderer->SetCurrent();
  renderer->InitGL();
  EXPECT_EQ(wxRect(), renderer->m_viewport);
  EXPECT_EQ(wxRect(), OpenGLRenderer::m_sharedViewport);
}

// Nothing is drawn into a hidden canvas, and GL is set up only once it is first shown.
TEST_F(GLTest, HiddenCanvasWaitsForItsFirstShowing) {
  GLTestRenderer* renderer = MakeRenderer();
  GLTestRenderer* other = MakeRenderer(MakeTile(wxPoint(220, 10), wxSize(50, 50)));
  bool overlaysDrawn = false;
  OverlayFunction overlays([&overlaysDrawn](IRenderer*, wxDC*) { overlaysDrawn = true; });
  renderer->SetDrawOverlaysHandler(&overlays);
  renderer->m_canvas->Hide();
  other->SetCurrent();
  const void* otherContext = CurrentContext();
  LogCapture log;
  renderer->Render(nullptr);
  EXPECT_EQ(otherContext, CurrentContext()) << "returned before making its context current";
  EXPECT_FALSE(renderer->m_isGLInitialized);
  EXPECT_EQ(0, log.Count(kVSyncOffLine));
  EXPECT_FALSE(overlaysDrawn);
  EXPECT_EQ(0, renderer->paints);

  renderer->m_canvas->Show();
  renderer->Render(nullptr);
  EXPECT_TRUE(renderer->m_isGLInitialized);
  EXPECT_EQ(1, log.Count(kVSyncOffLine));
  EXPECT_TRUE(overlaysDrawn);
}

TEST_F(GLTest, ToolTipIsMirroredOntoTheCanvasAndRemoved) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->Render(nullptr);
  EXPECT_EQ(nullptr, renderer->m_canvas->GetToolTip());

  tile->SetToolTip("Camera 1");
  renderer->Render(nullptr);
  const wxToolTip* mirrored = renderer->m_canvas->GetToolTip();
  ASSERT_NE(nullptr, mirrored);
  EXPECT_EQ("Camera 1", mirrored->GetTip());
  renderer->Render(nullptr);
  EXPECT_EQ(mirrored, renderer->m_canvas->GetToolTip()) << "the same text is not set again";

  tile->SetToolTip("Camera 2");
  renderer->Render(nullptr);
  ASSERT_NE(nullptr, renderer->m_canvas->GetToolTip());
  EXPECT_EQ("Camera 2", renderer->m_canvas->GetToolTip()->GetTip());

  tile->UnsetToolTip();
  renderer->Render(nullptr);
  EXPECT_EQ(nullptr, renderer->m_canvas->GetToolTip());
}

TEST_F(GLTest, CanvasTakesTheParentsCursorOnMouseEvents) {
  GLTestRenderer* renderer = MakeRenderer();
  InternalGLCanvas* canvas = renderer->m_canvas;
  tile->SetCursor(wxCursor(wxCURSOR_HAND));
  EXPECT_FALSE(canvas->GetCursor().IsSameAs(tile->GetCursor()));

  wxKeyEvent key(wxEVT_KEY_DOWN);
  canvas->GetEventHandler()->ProcessEvent(key);
  EXPECT_FALSE(canvas->GetCursor().IsSameAs(tile->GetCursor())) << "key events do not do it";

  wxMouseEvent motion(wxEVT_MOTION);
  canvas->GetEventHandler()->ProcessEvent(motion);
  EXPECT_TRUE(canvas->GetCursor().IsSameAs(tile->GetCursor()));

  tile->SetCursor(wxCursor(wxCURSOR_CROSS));
  wxMouseEvent wheel(wxEVT_MOUSEWHEEL);
  canvas->GetEventHandler()->ProcessEvent(wheel);
  EXPECT_TRUE(canvas->GetCursor().IsSameAs(tile->GetCursor()));
}

// Mouse and key events that reach the canvas go on to the tile once, and no further.
TEST_F(GLTest, MouseAndKeyEventsOnTheCanvasGoOnToTheParentOnly) {
  GLTestRenderer* renderer = MakeRenderer();
  std::vector<wxEventType> atTile;
  int atFrame = 0;
  auto recordAtTile = [&atTile](auto& event) {
    atTile.push_back(event.GetEventType());
    event.Skip();
  };
  auto countAtFrame = [&atFrame](auto& event) {
    ++atFrame;
    event.Skip();
  };
  tile->Bind(wxEVT_LEFT_DOWN, recordAtTile);
  tile->Bind(wxEVT_MOTION, recordAtTile);
  tile->Bind(wxEVT_KEY_DOWN, recordAtTile);
  tile->Bind(wxEVT_CHAR, recordAtTile);
  frame->Bind(wxEVT_LEFT_DOWN, countAtFrame);
  frame->Bind(wxEVT_MOTION, countAtFrame);
  frame->Bind(wxEVT_KEY_DOWN, countAtFrame);
  frame->Bind(wxEVT_CHAR, countAtFrame);
  wxMouseEvent click(wxEVT_LEFT_DOWN);
  wxMouseEvent motion(wxEVT_MOTION);
  wxKeyEvent key(wxEVT_KEY_DOWN);
  wxKeyEvent character(wxEVT_CHAR);
  for (wxEvent* event : std::initializer_list<wxEvent*>{&click, &motion, &key, &character}) {
    event->SetEventObject(renderer->m_canvas);
    renderer->m_canvas->GetEventHandler()->ProcessEvent(*event);
  }
  EXPECT_EQ((std::vector<wxEventType>{wxEVT_LEFT_DOWN, wxEVT_MOTION, wxEVT_KEY_DOWN, wxEVT_CHAR}),
            atTile);
  EXPECT_EQ(0, atFrame);
}

// Other events keep their own propagation: a size event of the canvas stays there.
TEST_F(GLTest, OtherCanvasEventsDoNotReachTheParent) {
  GLTestRenderer* renderer = MakeRenderer();
  int atTile = 0;
  tile->Bind(wxEVT_SET_CURSOR, [&atTile](wxSetCursorEvent& event) {
    ++atTile;
    event.Skip();
  });
  wxSetCursorEvent setCursor;
  setCursor.SetEventObject(renderer->m_canvas);
  renderer->m_canvas->GetEventHandler()->ProcessEvent(setCursor);
  EXPECT_EQ(0, atTile);
}
