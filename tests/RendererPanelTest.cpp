// The tile window's own handling of events, sent through its event entry point: mouse and key
// events it does not handle go on to its parent once and no further, a size event is taken
// (not skipped), an erase event is taken and draws nothing, and the panel's renderer is its
// own, chosen with the panel as the window to draw into.
#include <wx/dcmemory.h>

#include <renderer/RendererPanel.h>

#include "FacadeTest.h"

namespace {

class Panel : public FacadeTest {
 protected:
  void SetUp() override {
    FacadeTest::SetUp();
    panel = new RendererPanel("tile", tile, RENDER_MODE_SOFTWARE, wxID_ANY, wxPoint(0, 0),
                              wxSize(120, 90));
    PumpEvents();
  }

  // Counts the events of `type` that reach `window`'s own handlers, letting them go on.
  template <typename Event>
  void Count(wxWindow* window, const wxEventTypeTag<Event>& type, int* count) {
    window->Bind(type, [count](Event& event) {
      ++*count;
      event.Skip();
    });
  }

  RendererPanel* panel = nullptr;  // a child of the tile, destroyed with it
};

TEST_F(Panel, UnhandledMouseEventReachesTheParentAndNoFurther) {
  for (const wxEventTypeTag<wxMouseEvent>& type :
       {wxEVT_LEFT_DOWN, wxEVT_LEFT_UP, wxEVT_RIGHT_DOWN, wxEVT_MOTION, wxEVT_MOUSEWHEEL,
        wxEVT_LEFT_DCLICK}) {
    int onPanel = 0;
    int onParent = 0;
    int onGrandparent = 0;
    Count(panel, type, &onPanel);
    Count(tile, type, &onParent);
    Count(frame, type, &onGrandparent);
    wxMouseEvent event(type);
    event.SetEventObject(panel);
    event.SetPosition(wxPoint(30, 20));
    panel->GetEventHandler()->ProcessEvent(event);
    EXPECT_EQ(1, onPanel) << static_cast<wxEventType>(type);
    EXPECT_EQ(1, onParent) << "the parent should see it once: " << static_cast<wxEventType>(type);
    EXPECT_EQ(0, onGrandparent) << "passed beyond the parent: " << static_cast<wxEventType>(type);
  }
}

TEST_F(Panel, MouseEventThePanelHandlesStaysThere) {
  int onParent = 0;
  panel->Bind(wxEVT_LEFT_DOWN, [](wxMouseEvent&) {});  // handled, not skipped
  Count(tile, wxEVT_LEFT_DOWN, &onParent);
  wxMouseEvent event(wxEVT_LEFT_DOWN);
  event.SetEventObject(panel);
  EXPECT_TRUE(panel->GetEventHandler()->ProcessEvent(event));
  EXPECT_EQ(0, onParent);
}

TEST_F(Panel, UnhandledKeyEventReachesTheParentAndNoFurther) {
  for (const wxEventTypeTag<wxKeyEvent>& type : {wxEVT_KEY_DOWN, wxEVT_KEY_UP, wxEVT_CHAR}) {
    int onParent = 0;
    int onGrandparent = 0;
    int code = 0;
    tile->Bind(type, [&onParent, &code](wxKeyEvent& event) {
      ++onParent;
      code = event.GetKeyCode();
      event.Skip();
    });
    Count(frame, type, &onGrandparent);
    wxKeyEvent event(type);
    event.SetEventObject(panel);
    event.m_keyCode = 'Q';
    panel->GetEventHandler()->ProcessEvent(event);
    EXPECT_EQ(1, onParent) << static_cast<wxEventType>(type);
    EXPECT_EQ('Q', code);
    EXPECT_EQ(0, onGrandparent) << static_cast<wxEventType>(type);
  }
}

// Other events keep their own propagation: a size event of the panel stays with the panel.
TEST_F(Panel, OtherEventsAreNotPassedToTheParent) {
  int onParent = 0;
  Count(tile, wxEVT_SIZE, &onParent);
  Count(tile, wxEVT_ERASE_BACKGROUND, &onParent);
  wxSizeEvent size(wxSize(120, 90), panel->GetId());
  size.SetEventObject(panel);
  panel->GetEventHandler()->ProcessEvent(size);
  wxEraseEvent erase(panel->GetId(), nullptr);
  erase.SetEventObject(panel);
  panel->GetEventHandler()->ProcessEvent(erase);
  EXPECT_EQ(0, onParent);
}

TEST_F(Panel, SizeEventIsTakenNotSkipped) {
  wxSizeEvent size(wxSize(120, 90), panel->GetId());
  size.SetEventObject(panel);
  EXPECT_TRUE(panel->GetEventHandler()->ProcessEvent(size));
}

TEST_F(Panel, EraseEventIsTakenAndDrawsNothing) {
  wxBitmap bitmap(120, 90, 24);
  wxMemoryDC dc(bitmap);
  dc.SetBackground(*wxGREEN_BRUSH);
  dc.Clear();
  panel->SetBackgroundColour(*wxRED);
  wxEraseEvent erase(panel->GetId(), &dc);
  erase.SetEventObject(panel);
  EXPECT_TRUE(panel->GetEventHandler()->ProcessEvent(erase))
      << "an erase left to the toolkit would clear the background";
  dc.SelectObject(wxNullBitmap);
  EXPECT_TRUE(ImagesNear(bitmap.ConvertToImage(), SolidImage(wxSize(120, 90), *wxGREEN),
                         kExactPixels, "panel-erase"));
}

TEST_F(Panel, OwnsARendererThatDrawsIntoThePanel) {
  Renderer* renderer = panel->GetRenderer();
  ASSERT_NE(nullptr, renderer);
  EXPECT_EQ(panel, renderer->GetParent());
  // The back-end measures the window it was given: the panel, not the tile.
  EXPECT_EQ(panel->GetClientSize(), renderer->GetRenderClientSize());
  EXPECT_NE(tile->GetClientSize(), renderer->GetRenderClientSize());
}

TEST_F(Panel, GLBackendPutsItsCanvasInThePanel) {
  RunProbe(tile);
  ASSERT_TRUE(Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL));
  auto* gl =
      new RendererPanel("gl", tile, RENDER_MODE_OPENGL, wxID_ANY, wxPoint(0, 0), wxSize(100, 80));
  PumpEvents();
  EXPECT_EQ(1u, CanvasesOn(gl).size());
  EXPECT_EQ(0u, CanvasesOn(tile).size()) << "the canvas went into the panel's parent";
  gl->Destroy();
}

}  // namespace
