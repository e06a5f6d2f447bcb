// The GL canvas as the X server shows it, and real input through the X server. These tests
// need the screen to themselves: their frame sits where no other suite puts windows, and CTest
// runs them one at a time (resource lock "x-screen").
#include <GL/gl.h>
#include <wx/dcclient.h>
#include <wx/uiaction.h>

#include <renderer/InternalGLCanvas.h>

#include "GLTest.h"

namespace {

class Screen : public GLTest {
 protected:
  void SetUp() override {
    GLTest::SetUp();
    ASSERT_TRUE(MoveToScreenPlace());
  }
};

}  // namespace

// The tile's own paint handler paints the renderer, as a tile window does; what the window
// shows afterwards is the tile's background colour.
TEST_F(Screen, PaintClearsToTheParentsBackgroundColour) {
  GLTestRenderer* renderer = MakeRenderer();
  int paints = 0;
  auto onPaint = [&](wxPaintEvent&) {
    wxPaintDC dc(tile);
    renderer->Render(&dc);
    ++paints;
  };
  tile->Bind(wxEVT_PAINT, onPaint);
  tile->Refresh();
  const bool painted = PumpUntil([&paints] { return paints > 0; });
  tile->Unbind(wxEVT_PAINT, onPaint);
  ASSERT_TRUE(painted);
  EXPECT_TRUE(ImagesNear(renderer->drawn, BackgroundImage(), kExactPixels, "clear-drawn"));
  EXPECT_TRUE(
      ImagesNear(ReadWindow(renderer->m_canvas), BackgroundImage(), kExactPixels, "clear-window"));

  tile->SetBackgroundColour(wxColour(250, 240, 10));
  EXPECT_TRUE(ImagesNear(Paint(renderer), BackgroundImage(), kExactPixels, "clear-changed"));
}

TEST_F(Screen, DoubleBufferedCanvasShowsTheFrameAtTheSwap) {
  GLTestRenderer* renderer = MakeRenderer();
  tile->SetBackgroundColour(*wxRED);
  Paint(renderer);
  const wxImage red = SolidImage(tile->GetClientSize(), *wxRED);
  EXPECT_TRUE(ImagesNear(ReadWindow(renderer->m_canvas), red, kExactPixels, "swap-red"));

  // Without double buffering the frame is only flushed: the window keeps the last swap.
  tile->SetBackgroundColour(*wxGREEN);
  renderer->m_isDoubleBuffered = false;
  Paint(renderer);
  EXPECT_TRUE(ImagesNear(ReadWindow(renderer->m_canvas), red, kExactPixels, "flush-keeps-red"));

  renderer->m_isDoubleBuffered = true;
  Paint(renderer);
  EXPECT_TRUE(
      ImagesNear(ReadWindow(renderer->m_canvas), BackgroundImage(), kExactPixels, "swap-green"));
}

// Real input through the X server: the click lands on the canvas and reaches the tile, and no
// further than the tile.
TEST_F(Screen, ClickOnTheCanvasReachesTheParent) {
  GLTestRenderer* renderer = MakeRenderer();
  int tileClicks = 0;
  int frameClicks = 0;
  wxObject* clicked = nullptr;
  tile->Bind(wxEVT_LEFT_DOWN, [&](wxMouseEvent& event) {
    ++tileClicks;
    clicked = event.GetEventObject();
    event.Skip();
  });
  frame->Bind(wxEVT_LEFT_DOWN, [&frameClicks](wxMouseEvent& event) {
    ++frameClicks;
    event.Skip();
  });
  wxUIActionSimulator input;
  input.MouseMove(renderer->m_canvas->ClientToScreen(wxPoint(50, 40)));
  PumpEvents();
  input.MouseClick();
  EXPECT_TRUE(PumpUntil([&tileClicks] { return tileClicks > 0; }));
  EXPECT_EQ(1, tileClicks);
  EXPECT_EQ(renderer->m_canvas, clicked);
  EXPECT_EQ(0, frameClicks);
}

TEST_F(Screen, KeyPressOnTheCanvasReachesTheParent) {
  GLTestRenderer* renderer = MakeRenderer();
  std::vector<int> keys;
  tile->Bind(wxEVT_KEY_DOWN, [&keys](wxKeyEvent& event) {
    keys.push_back(event.GetKeyCode());
    event.Skip();
  });
  wxUIActionSimulator input;
  input.MouseMove(renderer->m_canvas->ClientToScreen(wxPoint(50, 40)));
  renderer->m_canvas->SetFocus();
  ASSERT_TRUE(PumpUntil([renderer] { return wxWindow::FindFocus() == renderer->m_canvas; }));
  input.Char('A');
  EXPECT_TRUE(PumpUntil([&keys] { return !keys.empty(); }));
  EXPECT_EQ((std::vector<int>{'A'}), keys);
}

TEST_F(Screen, CanvasHandlesEraseEventsByDoingNothing) {
  GLTestRenderer* renderer = MakeRenderer();
  tile->SetBackgroundColour(*wxRED);
  Paint(renderer);
  wxClientDC dc(renderer->m_canvas);
  wxEraseEvent erase(renderer->m_canvas->GetId(), &dc);
  erase.SetEventObject(renderer->m_canvas);
  EXPECT_TRUE(renderer->m_canvas->GetEventHandler()->ProcessEvent(erase));
  EXPECT_TRUE(ImagesNear(ReadWindow(renderer->m_canvas), SolidImage(tile->GetClientSize(), *wxRED),
                         kExactPixels, "erase"));
}
