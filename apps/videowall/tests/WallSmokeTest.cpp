// The whole wall in-process on real windows (Xvfb with GLX): every tile must show its camera
// on screen, as read back from the X server, in each render mode, on a 4x4 wall of sixteen
// file sources, across a render-mode switch, and after a lost source comes back.
#include <cstdio>
#include <memory>

#include <decompressor/CDigitalPTZ.h>
#include <gtest/gtest.h>

#include "RendererInfoWindow.h"
#include "WallFrame.h"
#include "WallMovie.h"
#include "WxTest.h"

namespace {

constexpr int kPlayMs = 20000;

}  // namespace

class WallSmokeTest : public ::testing::Test {
 protected:
  void TearDown() override {
    if (wall) wall->Destroy();
    wall = nullptr;
    PumpEvents();
  }

  // A wall at a place of the screen no other suite uses, shown.
  void OpenWall(WallOptions options) {
    options.geometry = wxRect(360, 0, 900, 600);
    wall = new WallFrame(options);
    wall->Show();
    PumpEvents();
  }

  // Waits until every shown tile has painted `more` pictures beyond what it had.
  bool PlayFrames(int more) {
    std::vector<long long> target;
    for (VideoTile* tile : wall->Tiles()) target.push_back(tile->Painted() + more);
    return PumpUntil(
        [&] {
          for (size_t i = 0; i < target.size(); ++i) {
            const VideoTile* tile = wall->Tiles()[i];
            if (tile->IsShown() && tile->Painted() < target[i]) return false;
          }
          return true;
        },
        kPlayMs);
  }

  // Lets the last paints reach the screen, then reads it and checks every shown tile.
  bool EveryTileShowsItsCamera(wxString& report) {
    PumpUntil([] { return false; }, 200);
    return wall->CheckPictures(wall->CaptureWall(), report);
  }

  void ExpectBackend(const wxString& name) {
    for (VideoTile* tile : wall->Tiles()) EXPECT_EQ(name, tile->BackendName()) << tile->GetName();
  }

  WallFrame* wall = nullptr;
};

class WallModeTest : public WallSmokeTest, public testing::WithParamInterface<RenderMode> {};

TEST_P(WallModeTest, DefaultWallShowsEveryCamera) {
  WallOptions options;
  options.renderMode = GetParam();
  OpenWall(options);
  ASSERT_EQ(9u, wall->Tiles().size());
  ASSERT_TRUE(PlayFrames(10));
  wxString report;
  EXPECT_TRUE(EveryTileShowsItsCamera(report)) << report;
  const bool gl =
      GetParam() != RENDER_MODE_SOFTWARE && Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL);
  ExpectBackend(gl ? "OpenGL" : "Software");
  EXPECT_TRUE(wall->StatusText().StartsWith("Tiles: 9 |")) << wall->StatusText();
}

TEST_F(WallSmokeTest, RendererInformationDescribesEveryMode) {
  OpenWall(WallOptions());
  ASSERT_TRUE(PlayFrames(1));
  const wxString text = RendererInfoWindow::Describe();
  EXPECT_NE(wxString::npos, text.find("Auto (supported)")) << text;
  EXPECT_NE(wxString::npos, text.find("Software (supported)")) << text;
  const bool gl = Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL);
  EXPECT_NE(wxString::npos, text.find(gl ? "OpenGL (supported)" : "OpenGL (not supported)"));
  if (!gl) return;
  const wxString description = Renderer::GetRendererDesc(RENDER_MODE_OPENGL);
  EXPECT_FALSE(description.empty());
  EXPECT_NE(wxString::npos, text.find(description));
}

INSTANTIATE_TEST_SUITE_P(RenderModes, WallModeTest,
                         testing::Values(RENDER_MODE_AUTO, RENDER_MODE_OPENGL,
                                         RENDER_MODE_SOFTWARE));

TEST_F(WallSmokeTest, FourByFourPlaysSixteenFileSources) {
  WallOptions options;
  ASSERT_TRUE(WallLayout::FromName("4x4", options.layout));
  for (int i = 0; i < 16; ++i) {
    const std::string path = WallMovie::TempPath("wall-source-" + std::to_string(i) + ".mkv");
    ASSERT_TRUE(WallMovie::Write(path, i % 2 ? 320 : 384, 240, 25)) << path;
    options.sources.push_back(path);
  }
  OpenWall(options);
  ASSERT_EQ(16u, wall->Tiles().size());
  ASSERT_TRUE(PlayFrames(5));
  wxString report;
  EXPECT_TRUE(EveryTileShowsItsCamera(report)) << report;
  for (const std::string& path : options.sources) std::remove(path.c_str());
}

TEST_F(WallSmokeTest, ALostSourceShowsNoSignalThenVideoAgain) {
  const std::string path = WallMovie::TempPath("wall-lost.mkv");
  const std::string away = WallMovie::TempPath("wall-lost-away.mkv");
  ASSERT_TRUE(WallMovie::Write(path, 320, 240, 25));
  WallOptions options;
  ASSERT_TRUE(WallLayout::FromName("1", options.layout));
  options.sources = {path};
  OpenWall(options);
  VideoTile* tile = wall->Tiles().front();
  ASSERT_TRUE(PlayFrames(5));
  ASSERT_EQ(0, std::rename(path.c_str(), away.c_str()));
  ASSERT_TRUE(PumpUntil([&] { return tile->State() == FeedState::NoSignal; }, 3000));
  tile->Repaint();
  wxString report;
  EXPECT_FALSE(EveryTileShowsItsCamera(report)) << "the lost picture is not greyed";
  EXPECT_NE(wxString::npos, report.find("bar")) << report;
  ASSERT_EQ(0, std::rename(away.c_str(), path.c_str()));
  ASSERT_TRUE(PumpUntil([&] { return tile->State() == FeedState::Playing; }, 5000));
  ASSERT_TRUE(PlayFrames(5));
  EXPECT_TRUE(EveryTileShowsItsCamera(report)) << report;
  std::remove(path.c_str());
}

TEST_F(WallSmokeTest, RenderModeSwitchesWhilePlaying) {
  OpenWall(WallOptions());
  ASSERT_TRUE(PlayFrames(5));
  wxString report;
  wall->SetRenderModeForAll(RENDER_MODE_SOFTWARE);
  ASSERT_TRUE(PlayFrames(5));
  ExpectBackend("Software");
  EXPECT_TRUE(EveryTileShowsItsCamera(report)) << report;
  if (!Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL)) return;
  wall->SetRenderModeForAll(RENDER_MODE_OPENGL);
  ASSERT_TRUE(PlayFrames(5));
  ExpectBackend("OpenGL");
  EXPECT_TRUE(EveryTileShowsItsCamera(report)) << report;
}

TEST_F(WallSmokeTest, ClickSelectsAndDoubleClickShowsATileAloneAndAgainTheWall) {
  OpenWall(WallOptions());
  ASSERT_TRUE(PlayFrames(2));
  VideoTile* chosen = wall->Tiles()[4];
  wxMouseEvent press(wxEVT_LEFT_DOWN);
  wall->Tiles()[0]->ProcessWindowEvent(press);
  chosen->ProcessWindowEvent(press);
  EXPECT_EQ(chosen, wall->SelectedTile()) << "a click selects its tile";
  wxMouseEvent click(wxEVT_LEFT_DCLICK);
  click.SetEventObject(chosen);
  chosen->ProcessWindowEvent(click);
  ASSERT_TRUE(PumpUntil([&] { return wall->SoloTile() == chosen; }));
  for (VideoTile* tile : wall->Tiles()) EXPECT_EQ(tile == chosen, tile->IsShown());
  ASSERT_TRUE(PlayFrames(3));
  wxString report;
  EXPECT_TRUE(EveryTileShowsItsCamera(report)) << report;
  chosen->ProcessWindowEvent(click);
  ASSERT_TRUE(PumpUntil([&] { return wall->SoloTile() == nullptr; }));
  for (VideoTile* tile : wall->Tiles()) EXPECT_TRUE(tile->IsShown());
}

TEST_F(WallSmokeTest, WheelZoomsThroughTheRenderersPtzAcrossBackEndsAndRightClickResets) {
  WallOptions options;
  ASSERT_TRUE(WallLayout::FromName("1", options.layout));
  OpenWall(options);
  ASSERT_TRUE(PlayFrames(2));
  VideoTile* tile = wall->Tiles().front();
  wxMouseEvent wheel(wxEVT_MOUSEWHEEL);
  wheel.m_wheelRotation = 120;
  wheel.SetPosition(tile->PictureRect().GetPosition());
  tile->ProcessWindowEvent(wheel);
  EXPECT_TRUE(tile->GetRenderer()->GetPtz()->IsActive());
  EXPECT_FLOAT_EQ(1.25f, tile->Ptz().Zoom());
  EXPECT_FLOAT_EQ(-0.2f, tile->Ptz().Pan());
  ASSERT_TRUE(PlayFrames(3));
  wxString report;
  EXPECT_FALSE(EveryTileShowsItsCamera(report)) << "the zoomed picture looks unzoomed";
  wall->SetRenderModeForAll(RENDER_MODE_SOFTWARE);  // the zoom stays across back-ends
  EXPECT_TRUE(tile->GetRenderer()->GetPtz()->IsActive());
  ASSERT_TRUE(PlayFrames(3));
  EXPECT_FALSE(EveryTileShowsItsCamera(report)) << "the zoom was lost with the back-end";
  wxMouseEvent right(wxEVT_RIGHT_DOWN);
  tile->ProcessWindowEvent(right);
  EXPECT_FALSE(tile->GetRenderer()->GetPtz()->IsActive());
  ASSERT_TRUE(PlayFrames(3));
  EXPECT_TRUE(EveryTileShowsItsCamera(report)) << report;
}

TEST_F(WallSmokeTest, ViewSettingsReachEveryTilesRenderer) {
  WallOptions options;
  ASSERT_TRUE(WallLayout::FromName("2x2", options.layout));
  OpenWall(options);
  ASSERT_TRUE(PlayFrames(1));
  wall->SetPictureShapeRule(PictureShapeRule::Stretch);
  for (VideoTile* tile : wall->Tiles()) {
    EXPECT_EQ(wxRect(tile->GetClientSize()), tile->PictureRect()) << tile->GetName();
  }
  wall->SetPictureShapeRule(PictureShapeRule::FourThree);
  for (VideoTile* tile : wall->Tiles()) {
    const wxRect picture = tile->PictureRect();
    EXPECT_NEAR(4.0 / 3.0, static_cast<double>(picture.width) / picture.height, 0.02);
  }
  wall->SetOverlayOpacity(64);
  for (VideoTile* tile : wall->Tiles()) EXPECT_EQ(64, tile->GetRenderer()->GetOpacity());
}

TEST_F(WallSmokeTest, AFallbackToSoftwareIsNamedAsSuch) {
  const bool gl = Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL);
  WallOptions options;
  ASSERT_TRUE(WallLayout::FromName("1", options.layout));
  options.renderMode = RENDER_MODE_OPENGL;
  OpenWall(options);
  ASSERT_TRUE(PlayFrames(1));
  VideoTile* tile = wall->Tiles().front();
  tile->GetRenderer()->ForceSoftwareMode(true);
  EXPECT_EQ(gl ? "Software (fallback)" : "Software", tile->BackendName());
  ASSERT_TRUE(PlayFrames(2));  // the next negotiation finds the picture fit for OpenGL again
  EXPECT_EQ(gl ? "OpenGL" : "Software", tile->BackendName());
}
