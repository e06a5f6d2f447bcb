// The overlay pass and the GL primitives, checked on the pixels the renderer drew.
//
// How the pictures come about: the projection maps the last pixel column and row to the
// right and bottom edges of the canvas, so a point x of the renderer lands at x * w / (w - 1)
// in the window, a little right of x and never a whole pixel. Rectangle corners sit half a
// pixel up and left of the integer corners and so cover exactly the rectangle's pixels. Line
// vertices sit half a pixel up and left too, but lines light the pixels whose centre diamond
// they leave (GL's rule), which in the left half of the tile is the row and column before the
// asked-for point.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <climits>

#include <renderer/GLEntryPoints.h>

#include "GLTest.h"

namespace {

// Alpha blending rounds each channel once.
constexpr int kBlendRounding = 1;

const wxColour kInk(255, 40, 0);

class Overlays : public GLTest {
 protected:
  // Paints a renderer whose overlay pass runs `draw`, and returns what it drew.
  wxImage Draw(const std::function<void(IRenderer*, wxDC*)>& draw) {
    GLTestRenderer* renderer = MakeRenderer();
    OverlayFunction overlays(draw);
    renderer->SetDrawOverlaysHandler(&overlays);
    const wxImage drawn = Paint(renderer);
    renderer->SetDrawOverlaysHandler(nullptr);
    return drawn;
  }

  // The background with `pixels` in ink.
  wxImage Expected(const std::vector<wxRect>& pixels) const {
    wxImage expected = BackgroundImage();
    for (const wxRect& area : pixels) {
      expected.SetRGB(area, kInk.Red(), kInk.Green(), kInk.Blue());
    }
    return expected;
  }

  static std::string Name() {
    return ::testing::UnitTest::GetInstance()->current_test_info()->name();
  }

  // Pure red blended at alpha 128 over the tile's colour.
  static wxColour RedAtAlpha128OverTheTile() {
    const double alpha = 128 / 255.0;
    return wxColour(static_cast<unsigned char>(255 * alpha + kTileColour.Red() * (1 - alpha)),
                    static_cast<unsigned char>(kTileColour.Green() * (1 - alpha)),
                    static_cast<unsigned char>(kTileColour.Blue() * (1 - alpha)));
  }
};

// The pixels of the one-pixel ring on the border of `square`.
std::vector<wxRect> Ring(const wxRect& square) {
  return {wxRect(square.x, square.y, square.width, 1),
          wxRect(square.x, square.GetBottom(), square.width, 1),
          wxRect(square.x, square.y, 1, square.height),
          wxRect(square.GetRight(), square.y, 1, square.height)};
}

}  // namespace

TEST_F(Overlays, FilledRectangleCoversExactlyItsPixels) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawRect(dc, wxRect(10, 20, 30, 15), kInk);
    renderer->DrawRect(dc, wxRect(150, 100, 50, 50), kInk);  // up to the tile's far corner
    renderer->DrawRect(dc, wxRect(0, 0, 1, 1), kInk);
  });
  EXPECT_TRUE(ImagesNear(
      drawn, Expected({wxRect(10, 20, 30, 15), wxRect(150, 100, 50, 50), wxRect(0, 0, 1, 1)}),
      kExactPixels, Name()));
}

TEST_F(Overlays, OutlineOfWidthOneIsOneRing) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawRectOutline(dc, wxRect(10, 10, 10, 10), kInk, 1);
  });
  // Ring vertices sit on the centres of the first and the second-to-last pixel, so the ring
  // of a 10 x 10 rectangle lights the border of columns and rows 10 to 18.
  EXPECT_TRUE(ImagesNear(drawn, Expected(Ring(wxRect(10, 10, 9, 9))), kExactPixels, Name()));
}

// Whether the rings are one line loop or several does not show in the pixels (a loop lights
// each pixel once either way); the rings themselves do.
TEST_F(Overlays, OutlineOfWidthThreeIsThreeNestedRings) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawRectOutline(dc, wxRect(10, 10, 10, 10), kInk, 3);
  });
  // Rings for 10 x 10, 8 x 8 and 6 x 6; the steps joining them run along the top-left
  // diagonal through pixels the rings light anyway.
  std::vector<wxRect> pixels;
  for (const wxRect& ring : {wxRect(10, 10, 9, 9), wxRect(11, 11, 7, 7), wxRect(12, 12, 5, 5)}) {
    const std::vector<wxRect> sides = Ring(ring);
    pixels.insert(pixels.end(), sides.begin(), sides.end());
  }
  EXPECT_TRUE(ImagesNear(drawn, Expected(pixels), kExactPixels, Name()));
}

// Rings past half the rectangle's smaller side are not drawn: they would only turn inside out
// and paint outside the rectangle, and a width of INT_MAX would never end. Any wider outline
// shows what the five rings a 10 x 10 rectangle has room for show.
TEST_F(Overlays, OutlineIsClampedToTheRingsTheRectangleHasRoomFor) {
  const wxImage fiveRings = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawRectOutline(dc, wxRect(10, 10, 10, 10), kInk, 5);
  });
  EXPECT_TRUE(ImagesNear(fiveRings, Expected({wxRect(10, 10, 9, 9)}), kExactPixels, Name()));
  for (const int width : {6, 30, INT_MAX}) {
    const wxImage drawn = Draw([width](IRenderer* renderer, wxDC* dc) {
      renderer->DrawRectOutline(dc, wxRect(10, 10, 10, 10), kInk, width);
    });
    EXPECT_TRUE(ImagesNear(drawn, fiveRings, kExactPixels, Name())) << "width " << width;
  }
}

// Far edges of host geometry near the int limits are summed wider than int: a rectangle and an
// outline that start just before INT_MAX lie wholly off the tile. Summed in int they wrapped
// round to the far negative side and were drawn across the tile.
TEST_F(Overlays, ShapesNearTheIntLimitStayOffTheTile) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawRect(dc, wxRect(INT_MAX - 10, 20, 100, 30), kInk);
    renderer->DrawRectOutline(dc, wxRect(20, INT_MAX - 10, 30, 100), kInk, 2);
    renderer->DrawRectOutline(dc, wxRect(INT_MAX - 10, 40, 100, 30), kInk, 2);
  });
  EXPECT_TRUE(ImagesNear(drawn, BackgroundImage(), kExactPixels, Name()));
}

// A horizontal line of width INT_MAX grows downwards from itself like any wide horizontal line;
// summed in int its far edge wrapped round and the quad grew upwards instead.
TEST_F(Overlays, LineOfTheLargestWidthGrowsTheUsualWay) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawLine(dc, wxPoint(10, 20), wxPoint(100, 20), kInk, INT_MAX);
  });
  EXPECT_TRUE(PixelNear(drawn, 50, 10, kTileColour, kExactPixels));
  EXPECT_TRUE(PixelNear(drawn, 50, 100, kInk, kExactPixels));
}

// A primitive given no colour at all (wxNullColour) is not drawn, and the toolkit is never
// asked for the channels of an invalid colour (it asserts).
TEST_F(Overlays, PrimitivesWithoutAColourDrawNothing) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawRect(dc, wxRect(10, 10, 50, 50), wxNullColour);
    renderer->DrawRectOutline(dc, wxRect(70, 10, 50, 50), wxNullColour, 3);
    renderer->DrawLine(dc, wxPoint(10, 80), wxPoint(150, 80), wxNullColour, 1);
    renderer->DrawLine(dc, wxPoint(10, 100), wxPoint(150, 100), wxNullColour, 5);
  });
  EXPECT_TRUE(ImagesNear(drawn, BackgroundImage(), kExactPixels, Name()));
}

TEST_F(Overlays, OutlineOfWidthZeroOrLessDrawsNothing) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawRectOutline(dc, wxRect(10, 10, 10, 10), kInk, 0);
    renderer->DrawRectOutline(dc, wxRect(30, 10, 10, 10), kInk, -2);
  });
  EXPECT_TRUE(ImagesNear(drawn, BackgroundImage(), kExactPixels, Name()));
}

TEST_F(Overlays, ThinLineIsOnePixelWide) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawLine(dc, wxPoint(10, 20), wxPoint(50, 20), kInk, 1);
    renderer->DrawLine(dc, wxPoint(20, 30), wxPoint(20, 60), kInk, 0);
  });
  // Both ends land inside the diamond of their pixel, so the first pixel is lit and the last
  // is not.
  EXPECT_TRUE(ImagesNear(drawn, Expected({wxRect(9, 19, 40, 1), wxRect(19, 29, 1, 30)}),
                         kExactPixels, Name()));
}

// The same points with width 2: a quad from the line to the line offset by (0, 2).
TEST_F(Overlays, WideLineIsAQuadOffsetByItsWidth) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawLine(dc, wxPoint(10, 20), wxPoint(50, 20), kInk, 2);
    renderer->DrawLine(dc, wxPoint(60, 10), wxPoint(60, 40), kInk, 3);
  });
  EXPECT_TRUE(ImagesNear(drawn, Expected({wxRect(10, 20, 40, 2), wxRect(60, 10, 3, 30)}),
                         kExactPixels, Name()));
}

namespace {

// A wide line and two pixels: one on the side the width grows to, one on the other side.
struct WideLineCase {
  const char* name;
  wxPoint from;
  wxPoint to;
  wxPoint grownSide;
  wxPoint otherSide;
};

void PrintTo(const WideLineCase& line, std::ostream* out) { *out << line.name; }

class WideLineDirection : public Overlays, public ::testing::WithParamInterface<WideLineCase> {};

}  // namespace

TEST_P(WideLineDirection, WidthGrowsToTheSideTheDirectionGives) {
  const WideLineCase& line = GetParam();
  const wxImage drawn = Draw([&line](IRenderer* renderer, wxDC* dc) {
    renderer->DrawLine(dc, line.from, line.to, kInk, 6);
  });
  EXPECT_TRUE(PixelNear(drawn, line.grownSide.x, line.grownSide.y, kInk, kExactPixels));
  EXPECT_TRUE(PixelNear(drawn, line.otherSide.x, line.otherSide.y, kTileColour, kExactPixels));
}

INSTANTIATE_TEST_SUITE_P(
    AllDirections, WideLineDirection,
    ::testing::Values(WideLineCase{"DownRight", {10, 10}, {40, 40}, {27, 23}, {23, 27}},
                      WideLineCase{"Down", {25, 10}, {25, 40}, {28, 25}, {22, 25}},
                      WideLineCase{"DownLeft", {40, 10}, {10, 40}, {23, 23}, {27, 27}},
                      WideLineCase{"Right", {10, 20}, {40, 20}, {25, 23}, {25, 17}},
                      WideLineCase{"Left", {40, 20}, {10, 20}, {25, 23}, {25, 17}},
                      WideLineCase{"UpRight", {10, 40}, {40, 10}, {27, 27}, {23, 23}},
                      WideLineCase{"Up", {25, 40}, {25, 10}, {28, 25}, {22, 25}},
                      WideLineCase{"UpLeft", {40, 40}, {10, 10}, {23, 27}, {27, 23}}),
    [](const ::testing::TestParamInfo<WideLineCase>& info) { return info.param.name; });

TEST_F(Overlays, WideLineBetweenEqualPointsDrawsNothing) {
  const wxImage drawn = Draw([](IRenderer* renderer, wxDC* dc) {
    renderer->DrawLine(dc, wxPoint(30, 30), wxPoint(30, 30), kInk, 5);
  });
  EXPECT_TRUE(ImagesNear(drawn, BackgroundImage(), kExactPixels, Name()));
}

TEST_F(Overlays, OnlyTheQuadPathLeavesTheLineWidthAlone) {
  std::vector<float> widths;
  auto width = [&widths] {
    GLfloat value = 0;
    glGetFloatv(GL_LINE_WIDTH, &value);
    widths.push_back(value);
  };
  Draw([&](IRenderer* renderer, wxDC* dc) {
    glLineWidth(3.0f);
    renderer->DrawLine(dc, wxPoint(10, 10), wxPoint(20, 10), kInk, 2);
    width();
    renderer->DrawLine(dc, wxPoint(10, 10), wxPoint(20, 10), kInk, 1);
    width();
    glLineWidth(3.0f);
    renderer->DrawRect(dc, wxRect(1, 1, 2, 2), kInk);
    width();
    glLineWidth(3.0f);
    renderer->DrawRectOutline(dc, wxRect(1, 1, 4, 4), kInk, 1);
    width();
  });
  EXPECT_EQ((std::vector<float>{3.0f, 1.0f, 1.0f, 1.0f}), widths);
}

TEST_F(Overlays, PrimitivesAreAlphaBlendedDuringThePassOnly) {
  bool blendingInPass = false;
  const wxImage drawn = Draw([&](IRenderer* renderer, wxDC* dc) {
    blendingInPass = glIsEnabled(GL_BLEND);
    renderer->DrawRect(dc, wxRect(10, 10, 20, 20), wxColour(255, 0, 0, 128));
  });
  EXPECT_TRUE(blendingInPass);
  EXPECT_FALSE(glIsEnabled(GL_BLEND));
  const wxColour blended = RedAtAlpha128OverTheTile();
  EXPECT_TRUE(PixelNear(drawn, 15, 15, blended, kBlendRounding));
  EXPECT_TRUE(PixelNear(drawn, 5, 5, kTileColour, kExactPixels));
}

TEST_F(Overlays, OpacityFadesThePrimitives) {
  GLTestRenderer* renderer = MakeRenderer();
  OverlayFunction overlays([](IRenderer* target, wxDC* dc) {
    target->DrawRect(dc, wxRect(10, 10, 20, 20), *wxRED);
    target->DrawLine(dc, wxPoint(40, 20), wxPoint(60, 20), *wxRED, 4);
  });
  renderer->SetDrawOverlaysHandler(&overlays);
  renderer->SetOpacity(0);
  EXPECT_TRUE(ImagesNear(Paint(renderer), BackgroundImage(), kExactPixels, "opacity-0"));
  renderer->SetOpacity(128);
  const wxImage drawn = Paint(renderer);
  const wxColour blended = RedAtAlpha128OverTheTile();
  EXPECT_TRUE(PixelNear(drawn, 15, 15, blended, kBlendRounding));
  EXPECT_TRUE(PixelNear(drawn, 50, 21, blended, kBlendRounding));
}

TEST_F(Overlays, FrameWithoutTexturesLeavesTheClearedBackground) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  glClearColor(1, 1, 1, 1);
  glClear(GL_COLOR_BUFFER_BIT);
  renderer->OnBeforeDraw(nullptr);
  renderer->DrawFrame(nullptr);
  EXPECT_TRUE(
      ImagesNear(ReadBackBuffer(tile->GetClientSize()), BackgroundImage(), kExactPixels, Name()));
}

TEST_F(Overlays, ClearFrameDeletesTexturesBuffersAndPrograms) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  const GLEntryPoints& functions = GLEntryPoints::Get();
  GLuint texture = 0;
  GLuint buffer = 0;
  GLuint program = 0;
  glGenTextures(1, &texture);
  glBindTexture(GL_TEXTURE_2D, texture);
  glBindTexture(GL_TEXTURE_2D, 0);
  functions.GenBuffers(1, &buffer);
  functions.BindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  functions.BindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  functions.GenProgramsARB(1, &program);
  functions.BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, program);
  functions.BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, 0);
  renderer->m_textures.push_back(texture);
  renderer->m_textureTargets[texture] = GL_TEXTURE_2D;
  renderer->m_pixelBuffers.push_back(buffer);
  renderer->m_programs.push_back(program);
  ASSERT_TRUE(glIsTexture(texture) && glIsBuffer(buffer) && IsProgramName(program));

  renderer->m_hasFrame = true;
  EXPECT_TRUE(renderer->ClearFrame());
  EXPECT_FALSE(renderer->HasFrame());
  EXPECT_TRUE(renderer->m_textures.empty());
  EXPECT_TRUE(renderer->m_textureTargets.empty());
  EXPECT_TRUE(renderer->m_pixelBuffers.empty());
  EXPECT_TRUE(renderer->m_programs.empty());
  EXPECT_FALSE(glIsTexture(texture));
  EXPECT_FALSE(glIsBuffer(buffer));
  EXPECT_FALSE(IsProgramName(program));
  EXPECT_FALSE(renderer->ClearFrame()) << "no frame left to clear";
}
