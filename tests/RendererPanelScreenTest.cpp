// The tile window as the X server shows it: painted on every paint event (through the host's
// just-in-time hook when one is set), repainted once and in full on a resize, and passing real
// clicks on to its parent.
#include <functional>
#include <string>
#include <vector>

#include <wx/app.h>
#include <wx/uiaction.h>

#include <renderer/RendererPanel.h>

#include "FacadeTest.h"

namespace {

const wxColour kPanelColour(60, 10, 90);
const wxColour kFrameColour(240, 200, 40);
const wxColour kMarkColour(0, 40, 250);
const wxRect kMark(10, 12, 30, 20);

// A hook made of a function.
class PaintHook : public IRendererPanelPaintHandler {
 public:
  explicit PaintHook(std::function<void(RendererPanel*)> hook) : m_hook(std::move(hook)) {}
  void OnRendererPanelPaint(RendererPanel* panel) override { m_hook(panel); }

 private:
  std::function<void(RendererPanel*)> m_hook;
};

class PanelOnScreen : public ScreenFacadeTest {
 protected:
  static constexpr int kWidth = 160;
  static constexpr int kHeight = 120;

  void SetUp() override {
    ScreenFacadeTest::SetUp();
    panel = new RendererPanel("tile", tile, RENDER_MODE_SOFTWARE, wxID_ANY, wxPoint(0, 0),
                              wxSize(kWidth, kHeight));
    panel->SetBackgroundColour(kPanelColour);
    panel->Bind(wxEVT_PAINT, [this](wxPaintEvent& event) {
      ++paints;
      regions.push_back(panel->GetUpdateRegion().GetBox());
      event.Skip();  // on to the panel's own handler
    });
    panel->Bind(wxEVT_ERASE_BACKGROUND, [this](wxEraseEvent& event) {
      ++erases;
      event.Skip();
    });
    // An event that no window takes ends at the application object.
    wxTheApp->Bind(wxEVT_ERASE_BACKGROUND, &PanelOnScreen::LeftToTheToolkit, this);
    wxTheApp->Bind(wxEVT_SIZE, &PanelOnScreen::LeftToTheToolkit, this);
    ASSERT_TRUE(PumpUntil([this] { return paints > 0; })) << "the panel was never painted";
    Quiet();
  }

  void TearDown() override {
    wxTheApp->Unbind(wxEVT_ERASE_BACKGROUND, &PanelOnScreen::LeftToTheToolkit, this);
    wxTheApp->Unbind(wxEVT_SIZE, &PanelOnScreen::LeftToTheToolkit, this);
    ScreenFacadeTest::TearDown();
  }

  void LeftToTheToolkit(wxEvent& event) {
    if (event.GetEventObject() == panel) ++untaken;
    event.Skip();
  }

  // Lets every pending paint happen, then forgets the counts.
  void Quiet() {
    Wait(200);
    paints = 0;
    erases = 0;
    untaken = 0;
    regions.clear();
  }

  // Pumps events for `ms` milliseconds whatever happens.
  static void Wait(int ms) {
    PumpUntil([] { return false; }, ms);
  }

  // A frame of `colour` in the panel's own proportions, loaded through the facade.
  void LoadFrame(const wxColour& colour) {
    Renderer* renderer = panel->GetRenderer();
    const int width = kWidth / 5;
    const int height = kHeight / 5;
    unsigned char* planes[3] = {};
    int pitches[3] = {};
    ASSERT_TRUE(renderer->GetFrameBuffer(width, height, PIXEL_FORMAT_RGB24, planes, pitches));
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        unsigned char* pixel = planes[0] + y * pitches[0] + x * 3;
        pixel[0] = colour.Red();
        pixel[1] = colour.Green();
        pixel[2] = colour.Blue();
      }
    }
    ASSERT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
  }

  // The frame filling the panel, with the host's mark over it.
  static wxImage FrameWithMark() {
    wxImage expected = SolidImage(wxSize(kWidth, kHeight), kFrameColour);
    expected.SetRGB(kMark, kMarkColour.Red(), kMarkColour.Green(), kMarkColour.Blue());
    return expected;
  }

  RendererPanel* panel = nullptr;  // a child of the tile, destroyed with it
  int paints = 0;
  int erases = 0;
  int untaken = 0;  // the panel's size and erase events that it did not take
  std::vector<wxRect> regions;
};

// The toolkit brings an erase event with each paint; the panel takes it (and draws nothing,
// see the event suite), so the background is never erased. The size event is taken too.
TEST_F(PanelOnScreen, ResizeRepaintsOnceInFullWithoutErasing) {
  for (const wxSize& size : {wxSize(180, 140), wxSize(100, 70)}) {
    SCOPED_TRACE(testing::Message() << size.x << "x" << size.y);
    panel->SetSize(size);
    ASSERT_TRUE(PumpUntil([this] { return paints > 0; }));
    Wait(300);
    EXPECT_EQ(1, paints);
    ASSERT_FALSE(regions.empty());
    EXPECT_EQ(wxRect(size), regions.front()) << "not the whole panel";
    EXPECT_LE(erases, paints);
    EXPECT_EQ(0, untaken) << "an erase or size event of the panel was left to the toolkit";
    Quiet();
  }
}

// A size event alone (no change of size) makes exactly one paint of the whole panel: the
// refresh is the panel's own.
TEST_F(PanelOnScreen, SizeEventAloneAsksForOneFullRepaint) {
  wxSizeEvent size(panel->GetSize(), panel->GetId());
  size.SetEventObject(panel);
  EXPECT_TRUE(panel->GetEventHandler()->ProcessEvent(size));
  ASSERT_TRUE(PumpUntil([this] { return paints > 0; }));
  Wait(300);
  EXPECT_EQ(1, paints);
  ASSERT_FALSE(regions.empty());
  EXPECT_EQ(wxRect(panel->GetClientSize()), regions.front());
}

TEST_F(PanelOnScreen, PaintWithoutHookRendersTheFrameAndTheHostsOverlays) {
  int overlayCalls = 0;
  IRenderer* painter = nullptr;
  OverlayFunction host([&](IRenderer* renderer, wxDC* dc) {
    ++overlayCalls;
    painter = renderer;
    panel->GetRenderer()->DrawRect(dc, kMark, kMarkColour);
  });
  panel->GetRenderer()->SetDrawOverlaysHandler(&host);
  LoadFrame(kFrameColour);
  panel->Refresh();
  ASSERT_TRUE(PumpUntil([this] { return paints > 0; }));
  Wait(200);
  EXPECT_EQ(paints, overlayCalls) << "the host's overlays once per paint";
  EXPECT_NE(nullptr, painter);
  EXPECT_TRUE(ImagesNear(ReadShown(panel), FrameWithMark(), kExactPixels, "panel-frame"));
}

// The hook runs at the start of each paint, before the renderer draws: a frame it loads is
// the one that paint shows.
TEST_F(PanelOnScreen, HookRunsBeforeTheRender) {
  std::vector<std::string> order;
  RendererPanel* hooked = nullptr;
  PaintHook hook([&](RendererPanel* p) {
    order.push_back("hook");
    hooked = p;
    LoadFrame(kFrameColour);
  });
  OverlayFunction host([&](IRenderer*, wxDC* dc) {
    order.push_back("overlays");
    panel->GetRenderer()->DrawRect(dc, kMark, kMarkColour);
  });
  panel->GetRenderer()->SetDrawOverlaysHandler(&host);
  panel->SetPaintHandler(&hook);
  panel->Refresh();
  ASSERT_TRUE(PumpUntil([this] { return paints > 0; }));
  Wait(200);
  panel->SetPaintHandler(nullptr);
  EXPECT_EQ(panel, hooked);
  ASSERT_GE(order.size(), 2u);
  for (size_t i = 0; i + 1 < order.size(); i += 2) {
    EXPECT_EQ("hook", order[i]);
    EXPECT_EQ("overlays", order[i + 1]);
  }
  EXPECT_EQ(2u * static_cast<size_t>(paints), order.size());
  EXPECT_TRUE(ImagesNear(ReadShown(panel), FrameWithMark(), kExactPixels, "panel-hook-frame"));
}

// Real input through the X server: a click on the panel that nothing there handles reaches
// the tile once, and not the frame.
TEST_F(PanelOnScreen, ClickReachesTheParentOnly) {
  int onParent = 0;
  int onGrandparent = 0;
  wxObject* clicked = nullptr;
  tile->Bind(wxEVT_LEFT_DOWN, [&](wxMouseEvent& event) {
    ++onParent;
    clicked = event.GetEventObject();
    event.Skip();
  });
  frame->Bind(wxEVT_LEFT_DOWN, [&onGrandparent](wxMouseEvent& event) {
    ++onGrandparent;
    event.Skip();
  });
  wxUIActionSimulator input;
  input.MouseMove(panel->ClientToScreen(wxPoint(50, 40)));
  PumpEvents();
  input.MouseClick();
  EXPECT_TRUE(PumpUntil([&onParent] { return onParent > 0; }));
  Wait(100);
  EXPECT_EQ(1, onParent);
  EXPECT_EQ(panel, clicked);
  EXPECT_EQ(0, onGrandparent);
}

}  // namespace
