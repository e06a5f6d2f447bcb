// RendererBase geometry: render client size, aspect ratio, video size, the PTZ in effect,
// sub-image rectangles and the settings copied between back-ends.
#include <climits>

#include <wx/dcmemory.h>

#include "TestBackend.h"
#include "WxTest.h"

namespace {

// A host PTZ that counts how often it is asked whether it is in use.
class CountingPtz : public CDigitalPTZ {
 public:
  bool IsActive() override {
    ++queries;
    return CDigitalPTZ::IsActive();
  }
  int queries = 0;
};

class RendererBaseGeometry : public WxTest {
 protected:
  void SetUp() override {
    WxTest::SetUp();
    tile = MakeTile(wxPoint(0, 0), wxSize(200, 100));
    backend = std::make_unique<TestBackend>(tile);
    backend->supportedFormats = {PIXEL_FORMAT_RGB24, PIXEL_FORMAT_I420};
  }
  void TearDown() override {
    backend.reset();
    WxTest::TearDown();
  }
  // A frame of the given size, flushed, drawn into a client of 800 x 800.
  void FrameIn800(int width, int height) {
    unsigned char* planes[3];
    int pitches[3];
    ASSERT_TRUE(backend->GetFrameBuffer(width, height, PIXEL_FORMAT_RGB24, planes, pitches));
    backend->FlushFrameBuffer(planes, pitches);
    backend->m_renderClientWidth = 800;
    backend->m_renderClientHeight = 800;
  }
  // A 1920x1080 video zoomed 2x by the renderer itself, with a frame of the given size.
  void ZoomedVideoWithFrame(int width, int height) {
    FrameIn800(width, height);
    backend->SetVideoSize(wxSize(1920, 1080));
    backend->m_normalPtz.SetZoomActive(true);
    backend->m_normalPtz.SetPanTiltZoom(0, 0, 2);
  }

  wxWindow* tile = nullptr;
  std::unique_ptr<TestBackend> backend;
};

}  // namespace

TEST_F(RendererBaseGeometry, RenderClientSizeIsTheWindowsOutsideRender) {
  EXPECT_EQ(wxSize(200, 100), backend->GetRenderClientSize());
  int width = 0, height = 0;
  backend->GetRenderClientSize(width, height);
  EXPECT_EQ(200, width);
  EXPECT_EQ(100, height);
}

TEST_F(RendererBaseGeometry, RenderClientSizeOverrideWinsWhenEitherSideIsSet) {
  backend->m_renderClientWidth = 0;
  backend->m_renderClientHeight = 300;
  EXPECT_EQ(wxSize(0, 300), backend->GetRenderClientSize());
  backend->m_renderClientWidth = 300;
  backend->m_renderClientHeight = 0;
  EXPECT_EQ(wxSize(300, 0), backend->GetRenderClientSize());
  backend->m_renderClientWidth = -5;
  backend->m_renderClientHeight = 0;
  EXPECT_EQ(wxSize(200, 100), backend->GetRenderClientSize());
}

TEST_F(RendererBaseGeometry, SplitRenderClientSizeGoesThroughTheVirtualForm) {
  class FixedSize : public TestBackend {
   public:
    using TestBackend::TestBackend;
    wxSize GetRenderClientSize() override { return wxSize(11, 22); }
    using RendererBase::GetRenderClientSize;
  } fixed(tile);
  int width = 0, height = 0;
  fixed.GetRenderClientSize(width, height);
  EXPECT_EQ(11, width);
  EXPECT_EQ(22, height);
}

TEST_F(RendererBaseGeometry, AspectSettingsLiveInTheNormalPtz) {
  backend->SetIgnoreAspectRatio(true);
  backend->SetAspectRatio(1.5f);
  EXPECT_TRUE(backend->m_normalPtz.GetIgnoreAspectRatio());
  EXPECT_FLOAT_EQ(1.5f, backend->m_normalPtz.GetAspectRatio());
  EXPECT_TRUE(backend->GetIgnoreAspectRatio());
  EXPECT_FLOAT_EQ(1.5f, backend->GetAspectRatio());
  backend->ResetAspectRatio();
  EXPECT_EQ(0.0f, backend->GetAspectRatio());
}

TEST_F(RendererBaseGeometry, CurrentAspectRatioNeedsAFrame) {
  backend->SetVideoSize(wxSize(640, 480));
  EXPECT_EQ(0.0f, backend->GetCurrentAspectRatio());
  FrameIn800(640, 480);
  EXPECT_FLOAT_EQ(4.0f / 3.0f, backend->GetCurrentAspectRatio());
  backend->SetAspectRatio(2.0f);
  EXPECT_FLOAT_EQ(2.0f, backend->GetCurrentAspectRatio());
}

TEST_F(RendererBaseGeometry, VideoSizeIsTheNormalPtzSize) {
  backend->SetVideoSize(wxSize(352, 288));
  int width, height;
  backend->m_normalPtz.GetSize(width, height);
  EXPECT_EQ(352, width);
  EXPECT_EQ(288, height);
  EXPECT_EQ(wxSize(352, 288), backend->GetVideoSize());
}

TEST_F(RendererBaseGeometry, DestinationRectangleSetAndReset) {
  backend->SetDestinationRect(wxRect(5, 6, 7, 8));
  EXPECT_EQ(wxRect(5, 6, 7, 8), backend->GetDestinationRect());
  backend->ResetDestinationRect();
  EXPECT_EQ(wxRect(0, 0, 0, 0), backend->GetDestinationRect());
}

TEST_F(RendererBaseGeometry, NormalPtzTakesTheFrameSizeWhenNoVideoSizeIsKnown) {
  FrameIn800(320, 240);
  int width, height;
  backend->GetNormalPtz()->GetSize(width, height);
  EXPECT_EQ(320, width);
  EXPECT_EQ(240, height);
  backend->SetVideoSize(wxSize(640, 480));
  backend->GetNormalPtz()->GetSize(width, height);
  EXPECT_EQ(640, width);
}

TEST_F(RendererBaseGeometry, NormalPtzClientIsTheDestinationOrTheRenderClient) {
  int width, height;
  backend->GetNormalPtz()->GetClientSize(width, height);
  EXPECT_EQ(200, width);
  EXPECT_EQ(100, height);
  backend->SetDestinationRect(wxRect(10, 10, 50, 0));  // one side zero: not used
  backend->GetNormalPtz()->GetClientSize(width, height);
  EXPECT_EQ(200, width);
  backend->SetDestinationRect(wxRect(10, 10, 50, 40));
  backend->GetNormalPtz()->GetClientSize(width, height);
  EXPECT_EQ(50, width);
  EXPECT_EQ(40, height);
}

TEST_F(RendererBaseGeometry, PtzInEffectIsTheHostsOnlyWhileItIsInUse) {
  CountingPtz host;
  backend->GetPtzType().Set(&host);
  EXPECT_EQ(static_cast<CDigitalPTZ*>(backend->GetNormalPtz()), backend->GetPtz());
  host.enabled = true;
  host.SetPanTiltZoom(0, 0, 2);
  EXPECT_EQ(&host, backend->GetPtz());
  EXPECT_EQ(2, host.queries);
}

TEST_F(RendererBaseGeometry, SubImageOfAWideFrameInASquareClientIsLetterboxed) {
  FrameIn800(1920, 1080);
  wxRect destination, source;
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(0, 0, 1920, 1080), source);
  EXPECT_EQ(wxRect(0, 175, 800, 450), destination);
}

TEST_F(RendererBaseGeometry, SubImageAsksThePtzInEffectWhetherItIsInUse) {
  CountingPtz host;
  backend->GetPtzType().Set(&host);
  FrameIn800(64, 48);
  wxRect destination, source;
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(1, host.queries);
}

TEST_F(RendererBaseGeometry, SubImageUsesTheZoomOfTheNormalPtzForTheVideoSize) {
  ZoomedVideoWithFrame(1920, 1080);
  wxRect destination, source;
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(480, 270, 960, 540), source);
  EXPECT_EQ(wxRect(0, 175, 800, 450), destination);
}

TEST_F(RendererBaseGeometry, SubImageOnTheSlowPathZoomsOnlyWhenForced) {
  ZoomedVideoWithFrame(1920, 1080);
  backend->m_normalPtz.slowPath = true;
  wxRect destination, source;
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(0, 0, 1920, 1080), source);
  backend->GetSubImageRect(destination, source, true);
  EXPECT_EQ(wxRect(480, 270, 960, 540), source);
}

TEST_F(RendererBaseGeometry, SubImageOfAFrameOtherThanTheVideoDoesNotZoom) {
  ZoomedVideoWithFrame(960, 540);
  wxRect destination, source;
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(0, 0, 960, 540), source);
  EXPECT_EQ(wxRect(0, 175, 800, 450), destination);
}

TEST_F(RendererBaseGeometry, SlowPathFrameKeepsItsOwnShape) {
  // The decoder delivered a square crop of a 16:9 video: it is shown square.
  FrameIn800(400, 400);
  backend->SetVideoSize(wxSize(1920, 1080));
  backend->m_normalPtz.slowPath = true;
  wxRect destination, source;
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(0, 0, 400, 400), source);
  EXPECT_EQ(wxRect(0, 0, 800, 800), destination);
  backend->GetSubImageRect(destination, source, true);  // forced: the video's shape
  EXPECT_EQ(wxRect(0, 175, 800, 450), destination);
}

TEST_F(RendererBaseGeometry, SubImageIsShiftedIntoTheDestinationRectangle) {
  FrameIn800(1920, 1080);
  backend->SetDestinationRect(wxRect(100, 50, 400, 400));
  wxRect destination, source;
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(100, 50 + 87, 400, 225), destination);
}

TEST_F(RendererBaseGeometry, SubImageShiftedPastTheIntLimitIsClamped) {
  FrameIn800(1920, 1080);
  backend->SetDestinationRect(wxRect(INT_MAX - 10, INT_MIN + 10, 400, 400));
  wxRect destination, source;
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(INT_MAX - 10, INT_MIN + 10 + 87, 400, 225), destination);
  backend->SetDestinationRect(wxRect(INT_MAX - 10, INT_MAX - 10, 400, 400));
  backend->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(INT_MAX - 10, INT_MAX, 400, 225), destination);
}

TEST_F(RendererBaseGeometry, SubImageForAGivenSize) {
  backend->m_renderClientWidth = 800;
  backend->m_renderClientHeight = 800;
  backend->SetVideoSize(wxSize(640, 480));
  wxRect destination, source;
  backend->GetSubImageRect(640, 480, destination, source, false);
  EXPECT_EQ(wxRect(0, 0, 640, 480), source);
  EXPECT_EQ(wxRect(0, 100, 800, 600), destination);
}

TEST_F(RendererBaseGeometry, AdjustedPtzSourceRectIsTheForcedZoomWindowOfTheVideo) {
  backend->SetVideoSize(wxSize(1920, 1080));
  backend->m_normalPtz.SetZoomActive(true);
  backend->m_normalPtz.SetPanTiltZoom(1, 1, 4);
  backend->m_normalPtz.slowPath = true;
  EXPECT_EQ(wxRect(1440, 810, 480, 270), backend->GetAdjustedPtzSourceRect());
}

TEST_F(RendererBaseGeometry, NormalizeRectMakesSidesNonNegative) {
  EXPECT_EQ(wxRect(6, 4, 4, 6), RendererBase::NormalizeRect(wxRect(10, 10, -4, -6)));
  EXPECT_EQ(wxRect(1, 2, 3, 4), RendererBase::NormalizeRect(wxRect(1, 2, 3, 4)));
  EXPECT_EQ(wxRect(0, 10, 5, 0), RendererBase::NormalizeRect(wxRect(5, 10, -5, 0)));
}

TEST_F(RendererBaseGeometry, CopySettingsCarriesEverySetting) {
  class Handler : public IRendererDrawOverlays {
    void RendererDrawOverlays(IRenderer*, wxDC*) override {}
  } handler;
  backend->SetIgnoreAspectRatio(true);
  backend->SetAspectRatio(1.25f);
  backend->SetDestinationRect(wxRect(1, 2, 30, 40));
  backend->SetVideoSize(wxSize(704, 576));
  backend->SetDrawOverlaysHandler(&handler);
  backend->SetOpacity(77);
  backend->m_normalPtz.SetSourceRect(8, 9, 100, 50);
  backend->m_normalPtz.SetZoomActive(true);
  backend->m_normalPtz.SetPanTiltZoom(0.5f, -0.5f, 3.0f);
  backend->m_normalPtz.SetMaxZoom(6.0f);
  backend->m_normalPtz.enabled = true;

  TestBackend target(tile);
  backend->CopySettings(&target);

  EXPECT_TRUE(target.GetIgnoreAspectRatio());
  EXPECT_FLOAT_EQ(1.25f, target.GetAspectRatio());
  EXPECT_EQ(wxRect(1, 2, 30, 40), target.GetDestinationRect());
  EXPECT_EQ(wxSize(704, 576), target.GetVideoSize());
  EXPECT_EQ(77, target.GetOpacity());
  int x, y, w, h;
  target.m_normalPtz.GetSourceRect(x, y, w, h);
  EXPECT_EQ(wxRect(8, 9, 100, 50), wxRect(x, y, w, h));
  EXPECT_TRUE(target.m_normalPtz.GetZoomActive());
  float pan, tilt, zoom;
  target.m_normalPtz.GetPanTiltZoom(pan, tilt, zoom);
  EXPECT_FLOAT_EQ(0.5f, pan);
  EXPECT_FLOAT_EQ(-0.5f, tilt);
  EXPECT_FLOAT_EQ(3.0f, zoom);
  EXPECT_FLOAT_EQ(6.0f, target.m_normalPtz.GetMaxZoom());
  EXPECT_TRUE(target.m_normalPtz.enabled);
  EXPECT_TRUE(target.GetPtz()->IsActive());

  {
    // The handler went across: drawing the target's overlays reaches it.
    class Recorder : public IRendererDrawOverlays {
     public:
      void RendererDrawOverlays(IRenderer*, wxDC*) override { ++calls; }
      int calls = 0;
    } recorder;
    TestBackend third(tile);
    third.SetDrawOverlaysHandler(&recorder);
    third.CopySettings(&target);
    target.DrawOverlays(nullptr);
    EXPECT_EQ(1, recorder.calls);
  }
}

TEST_F(RendererBaseGeometry, CopySettingsSharesTheHostsPtz) {
  CountingPtz host;
  host.enabled = true;
  host.SetPanTiltZoom(0.25f, 0, 2);
  host.SetMaxZoom(5.0f);
  backend->GetPtzType().Set(&host);
  TestBackend target(tile);
  backend->CopySettings(&target);
  EXPECT_EQ(&host, target.GetPtzType().Get());
  EXPECT_EQ(&host, target.GetPtz());
  float pan, tilt, zoom;
  host.GetPanTiltZoom(pan, tilt, zoom);
  EXPECT_FLOAT_EQ(0.25f, pan);
  EXPECT_FLOAT_EQ(2.0f, zoom);
}

TEST_F(RendererBaseGeometry, CopySettingsNeverLendsTheSourcesOwnPtz) {
  auto target = std::make_unique<TestBackend>(tile);
  CDigitalPTZ* targetOwn = target->GetPtzType().Get();
  backend->CopySettings(target.get());
  EXPECT_EQ(targetOwn, target->GetPtzType().Get());
  backend.reset();  // the target must not point into the destroyed source
  EXPECT_EQ(static_cast<CDigitalPTZ*>(target->GetNormalPtz()), target->GetPtz());
}
