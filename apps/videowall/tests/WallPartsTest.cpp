// The wall's plain parts: layouts, reconnect waits, PTZ gestures, packet pacing, rates, the
// command line and the soak's random choices.
#include <cstdio>
#include <fstream>

#include <gtest/gtest.h>

#include "PacketPacer.h"
#include "PtzNavigator.h"
#include "RateMeter.h"
#include "ReconnectBackoff.h"
#include "SoakDriver.h"
#include "WallLayout.h"
#include "WallOptions.h"

using namespace std::chrono_literals;

TEST(WallLayoutTest, OffersTheSixGridsByName) {
  const char* names[] = {"1", "2x2", "3x3", "4x4", "6x6", "8x8"};
  const int tiles[] = {1, 4, 9, 16, 36, 64};
  ASSERT_EQ(6u, WallLayout::All().size());
  for (int i = 0; i < 6; ++i) {
    WallLayout layout;
    ASSERT_TRUE(WallLayout::FromName(names[i], layout)) << names[i];
    EXPECT_EQ(tiles[i], layout.TileCount());
    EXPECT_EQ(names[i], layout.Name());
  }
}

TEST(WallLayoutTest, DefaultsToThreeByThreeAndRejectsOtherGrids) {
  WallLayout layout;
  EXPECT_EQ("3x3", layout.Name());
  EXPECT_FALSE(WallLayout::FromName("5x5", layout));
  EXPECT_FALSE(WallLayout::FromName("", layout));
  EXPECT_EQ("3x3", layout.Name());
}

TEST(ReconnectBackoffTest, DoublesFromOneUpToThirtySecondsAndStartsOverAfterReset) {
  ReconnectBackoff backoff;
  const std::chrono::seconds expected[] = {1s, 2s, 4s, 8s, 16s, 30s, 30s};
  for (const std::chrono::seconds wait : expected) EXPECT_EQ(wait, backoff.Next());
  backoff.Reset();
  EXPECT_EQ(1s, backoff.Next());
}

TEST(PtzNavigatorTest, WheelZoomKeepsThePointUnderThePointer) {
  PtzNavigator ptz(8.0f);
  ptz.ZoomAt(0.75f, 0.25f, 2.0f);
  EXPECT_FLOAT_EQ(2.0f, ptz.Zoom());
  // At zoom 2 the view is half the picture; the point 3/4 across stays at 3/4 of the view,
  // so the view spans 3/8 .. 7/8 horizontally (centre 5/8, pan 1/4).
  EXPECT_FLOAT_EQ(0.25f, ptz.Pan());
  EXPECT_FLOAT_EQ(-0.25f, ptz.Tilt());
}

TEST(PtzNavigatorTest, ZoomIsClampedAndTheViewStaysInsideThePicture) {
  PtzNavigator ptz(4.0f);
  ptz.ZoomAt(1.0f, 1.0f, 100.0f);
  EXPECT_FLOAT_EQ(4.0f, ptz.Zoom());
  EXPECT_FLOAT_EQ(0.75f, ptz.Pan());  // centre at 7/8: the right edge of the view on the picture's
  EXPECT_FLOAT_EQ(0.75f, ptz.Tilt());
  ptz.ZoomAt(0.5f, 0.5f, 0.01f);
  EXPECT_FALSE(ptz.IsZoomed());
  EXPECT_FLOAT_EQ(0.0f, ptz.Pan());
}

TEST(PtzNavigatorTest, DraggingMovesTheViewAgainstTheDragAndResetShowsAll) {
  PtzNavigator ptz(8.0f);
  ptz.ZoomAt(0.5f, 0.5f, 4.0f);
  ptz.PanBy(0.5f, -0.5f);  // half a view to the right and up: the view moves left and down
  EXPECT_FLOAT_EQ(-0.25f, ptz.Pan());
  EXPECT_FLOAT_EQ(0.25f, ptz.Tilt());
  ptz.Reset();
  EXPECT_FLOAT_EQ(1.0f, ptz.Zoom());
  EXPECT_FLOAT_EQ(0.0f, ptz.Pan());
}

TEST(PacketPacerTest, LaysTimestampsOnTheClockAndStartsOverOnAJumpBack) {
  PacketPacer pacer;
  pacer.SetTimeBase(1, 25);
  const auto start = PacketPacer::Clock::now();
  EXPECT_EQ(start, pacer.DueTime(100, start));
  EXPECT_EQ(start + 400ms, pacer.DueTime(110, start + 10ms));
  const auto later = start + 500ms;
  EXPECT_EQ(later, pacer.DueTime(0, later));  // a file that loops
}

TEST(PacketPacerTest, StartsOverWhenFarBehind) {
  PacketPacer pacer;
  pacer.SetTimeBase(1, 1000);
  const auto start = PacketPacer::Clock::now();
  pacer.DueTime(0, start);
  const auto late = start + 5s;
  EXPECT_EQ(late, pacer.DueTime(40, late));
}

TEST(RateMeterTest, CountsPerSecondBetweenSamples) {
  RateMeter meter;
  const auto start = RateMeter::Clock::now();
  EXPECT_EQ(0.0, meter.Sample(10, start));
  EXPECT_DOUBLE_EQ(25.0, meter.Sample(60, start + 2s));
  EXPECT_DOUBLE_EQ(25.0, meter.Rate());
}

TEST(WallOptionsTest, ReadsRenderModesAndGeometry) {
  RenderMode mode = RENDER_MODE_AUTO;
  EXPECT_TRUE(WallOptions::ParseRenderMode("OpenGL", mode));
  EXPECT_EQ(RENDER_MODE_OPENGL, mode);
  EXPECT_TRUE(WallOptions::ParseRenderMode("software", mode));
  EXPECT_EQ(RENDER_MODE_SOFTWARE, mode);
  EXPECT_FALSE(WallOptions::ParseRenderMode("directx", mode));
  wxRect geometry;
  EXPECT_TRUE(WallOptions::ParseGeometry("900x600+360+10", geometry));
  EXPECT_EQ(wxRect(360, 10, 900, 600), geometry);
  EXPECT_TRUE(WallOptions::ParseGeometry("800x500", geometry));
  EXPECT_EQ(wxSize(800, 500), geometry.GetSize());
  EXPECT_FALSE(WallOptions::ParseGeometry("800x", geometry));
  EXPECT_FALSE(WallOptions::ParseGeometry("800x500+1+2junk", geometry));
}

TEST(WallOptionsTest, SourcesFileSkipsBlankAndCommentLines) {
  const std::string path = testing::TempDir() + "wall-sources.txt";
  std::ofstream(path) << "# cameras\nrtsp://cam1/stream\n\n  /video/door.mp4  \nhttp://cam2/x";
  std::vector<std::string> sources;
  ASSERT_TRUE(WallOptions::ReadSourcesFile(path, sources));
  const std::vector<std::string> expected = {"rtsp://cam1/stream", "/video/door.mp4",
                                             "http://cam2/x"};
  EXPECT_EQ(expected, sources);
  std::remove(path.c_str());
  EXPECT_FALSE(WallOptions::ReadSourcesFile(path, sources));
}

TEST(WallOptionsTest, ParsesTheCommandLine) {
  wxCmdLineParser parser;
  WallOptions::Describe(parser);
  parser.SetCmdLine(
      "--layout 4x4 --source a.h264 --source rtsp://b --render-mode software "
      "--name-position 9 --screenshot out.png --frames 5 --self-check");
  ASSERT_EQ(0, parser.Parse(false));
  WallOptions options;
  wxString error;
  ASSERT_TRUE(WallOptions::Read(parser, options, error)) << error;
  EXPECT_EQ(16, options.layout.TileCount());
  EXPECT_EQ((std::vector<std::string>{"a.h264", "rtsp://b"}), options.sources);
  EXPECT_EQ(RENDER_MODE_SOFTWARE, options.renderMode);
  EXPECT_EQ("out.png", options.screenshot);
  EXPECT_EQ(5, options.frames);
  EXPECT_TRUE(options.selfCheck);
  EXPECT_EQ(9, options.namePosition);
}

// A soak run is the 4x4 wall in a small window unless a geometry is given.
TEST(WallOptionsTest, ASoakRunsSixteenTilesInASmallWindow) {
  wxCmdLineParser parser;
  WallOptions::Describe(parser);
  parser.SetCmdLine("--soak 2000 --seed 7");
  ASSERT_EQ(0, parser.Parse(false));
  WallOptions options;
  wxString error;
  ASSERT_TRUE(WallOptions::Read(parser, options, error)) << error;
  EXPECT_EQ(2000, options.soakFrames);
  EXPECT_EQ(7u, options.seed);
  EXPECT_EQ(16, options.layout.TileCount());
  EXPECT_EQ(wxSize(WallOptions::kSoakWidth, WallOptions::kSoakHeight), options.geometry.GetSize());

  wxCmdLineParser placed;
  WallOptions::Describe(placed);
  placed.SetCmdLine("--soak 10 --layout 2x2 --geometry 640x480+0+600");
  ASSERT_EQ(0, placed.Parse(false));
  WallOptions given;
  ASSERT_TRUE(WallOptions::Read(placed, given, error)) << error;
  EXPECT_EQ(16, given.layout.TileCount());
  EXPECT_EQ(wxRect(0, 600, 640, 480), given.geometry);
  EXPECT_EQ(1u, given.seed);
}

TEST(WallOptionsTest, RejectsUnknownLayoutsModesAndNamePositions) {
  const char* lines[] = {"--layout 5x5",       "--render-mode directx",
                         "--name-position 10", "--sources /nonexistent/list.txt",
                         "--soak 0",           "--soak -3",
                         "--seed -1"};
  for (const char* line : lines) {
    wxCmdLineParser parser;
    WallOptions::Describe(parser);
    parser.SetCmdLine(line);
    ASSERT_EQ(0, parser.Parse(false)) << line;
    WallOptions options;
    wxString error;
    EXPECT_FALSE(WallOptions::Read(parser, options, error)) << line;
    EXPECT_FALSE(error.empty()) << line;
  }
}

namespace {

std::vector<std::optional<SoakStep>> Choices(unsigned long seed, int count) {
  SoakDriver driver(seed, 16, wxSize(400, 300));
  std::vector<std::optional<SoakStep>> choices;
  for (int i = 0; i < count; ++i) choices.push_back(driver.Choose());
  return choices;
}

}  // namespace

TEST(SoakDriverTest, TheSeedAloneDecidesTheChoices) {
  EXPECT_EQ(Choices(5, 400), Choices(5, 400));
  EXPECT_NE(Choices(5, 400), Choices(6, 400));
}

// About one frame in four acts; over many frames every action comes up, on every tile, with
// amounts from 0 to 1.
TEST(SoakDriverTest, EveryActionComesUpOnEveryTile) {
  const std::vector<std::optional<SoakStep>> choices = Choices(1, 8000);
  std::vector<int> actions(kSoakActionCount);
  std::vector<int> tiles(16);
  int acting = 0;
  for (const std::optional<SoakStep>& step : choices) {
    if (!step) continue;
    ++acting;
    ++actions.at(static_cast<size_t>(step->action));
    ++tiles.at(static_cast<size_t>(step->tile));
    for (const double amount : {step->x, step->y, step->amount}) {
      EXPECT_GE(amount, 0.0);
      EXPECT_LE(amount, 1.0);
    }
  }
  EXPECT_GT(acting, 1600);
  EXPECT_LT(acting, 2400);
  for (int i = 0; i < kSoakActionCount; ++i) {
    EXPECT_GT(actions[i], 80) << SoakDriver::Name(static_cast<SoakAction>(i));
  }
  for (int tile = 0; tile < 16; ++tile) EXPECT_GT(tiles[tile], 60) << "tile " << tile;
}
