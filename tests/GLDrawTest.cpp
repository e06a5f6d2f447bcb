// Frame and image drawing of the GL back-end: where the video quad lands (letterboxed, inside
// a destination rectangle, stretched, zoomed by the PTZ, with power-of-two textures), the
// coordinates it is drawn with, opacity, host images and bitmaps, and the GL state a frame
// leaves behind.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <climits>
#include <stdexcept>

#include <renderer/OpenGLImage.h>
#include <renderer/wxGLFont.h>

#include "GLFrameTest.h"

namespace {

constexpr int kBlockSide = 8;

struct GeometryCase {
  const char* name;
  int format;
};

void PrintTo(const GeometryCase& geometry, std::ostream* out) { *out << geometry.name; }

bool IsYuv(int format) {
  return format != PIXEL_FORMAT_RGB24 && format != PIXEL_FORMAT_BGR24 &&
         format != PIXEL_FORMAT_RGBA32;
}

// One single-texture format, one planar and one rectangle-texture format.
class Placement : public GLFrameTest, public ::testing::WithParamInterface<GeometryCase> {
 protected:
  // Feeds a block picture of `size`, paints it, and compares with the model of where the
  // renderer says the frame goes; returns the destination it used.
  wxRect DrawAndCompare(GLTestRenderer* renderer, const wxSize& size) {
    const FramePicture picture = FramePicture::Blocks(GetParam().format, size, kBlockSide);
    EXPECT_TRUE(Feed(renderer, picture));
    wxImage expected;
    EXPECT_TRUE(Expected(renderer, picture, &expected));
    const int tolerance = IsYuv(GetParam().format) ? kYuvConversionTolerance : kExactPixels;
    EXPECT_TRUE(ImagesNear(PaintFrame(renderer), expected, tolerance, TestName()));
    return FramePlacement(renderer).destination;
  }
};

}  // namespace

TEST_P(Placement, WideFrameIsLetterboxed) {
  GLTestRenderer* renderer = MakeRenderer();
  EXPECT_EQ(wxRect(0, 25, 200, 100), DrawAndCompare(renderer, wxSize(200, 100)));
}

TEST_P(Placement, TallFrameIsPillarboxedInsideTheDestinationRectangle) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetDestinationRect(wxRect(30, 20, 160, 100));
  EXPECT_EQ(wxRect(80, 20, 60, 100), DrawAndCompare(renderer, wxSize(96, 160)));
}

TEST_P(Placement, IgnoredAspectRatioStretchesTheFrame) {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetIgnoreAspectRatio(true);
  EXPECT_EQ(wxRect(0, 0, 200, 150), DrawAndCompare(renderer, wxSize(96, 48)));
}

// The renderer's own PTZ zoomed in twice, looking right of the centre and up: a quarter of the
// frame fills the tile.
TEST_P(Placement, ZoomShowsTheSubRectangle) {
  GLTestRenderer* renderer = MakeRenderer();
  NormalDigitalPTZ* ptz = renderer->GetNormalPtz();
  ptz->SetZoomActive(true);
  ptz->SetPanTiltZoom(0.25f, -0.25f, 2.0f);
  EXPECT_EQ(wxRect(0, 0, 200, 150), DrawAndCompare(renderer, wxSize(160, 120)));
  wxRect destination;
  wxRect source;
  renderer->GetSubImageRect(destination, source, false);
  EXPECT_EQ(wxRect(60, 15, 80, 60), source);
}

// Without non-power-of-two textures the coordinates shrink with the larger texture; the
// picture stays the same.
TEST_P(Placement, PowerOfTwoTexturesShowTheSamePicture) {
  GLTestRenderer* renderer = MakeRenderer();
  const wxImage nonPowerOfTwo = [&] {
    DrawAndCompare(renderer, wxSize(160, 120));
    return renderer->drawn;
  }();
  const ScopedValue<bool> nonPow2(OpenGLRenderer::m_isNonPow2Supported, false);
  renderer->SetCurrent();
  DrawAndCompare(renderer, wxSize(160, 120));
  EXPECT_EQ(wxSize(256, 128), renderer->m_textureSize);
  EXPECT_TRUE(ImagesNear(renderer->drawn, nonPowerOfTwo, kExactPixels, TestName() + "-same"));
}

INSTANTIATE_TEST_SUITE_P(Formats, Placement,
                         ::testing::Values(GeometryCase{"RGB24", PIXEL_FORMAT_RGB24},
                                           GeometryCase{"I420", PIXEL_FORMAT_I420},
                                           GeometryCase{"YUYV", PIXEL_FORMAT_YUYV}),
                         [](const ::testing::TestParamInfo<GeometryCase>& info) {
                           return std::string(info.param.name);
                         });

// ---- Coordinates -------------------------------------------------------------------------------

namespace {

using Drawing = GLFrameTest;

void ExpectCoordinates(const GLTestRenderer::TextureRect& expected,
                       const GLTestRenderer::TextureRect& actual) {
  EXPECT_FLOAT_EQ(expected.left, actual.left);
  EXPECT_FLOAT_EQ(expected.top, actual.top);
  EXPECT_FLOAT_EQ(expected.right, actual.right);
  EXPECT_FLOAT_EQ(expected.bottom, actual.bottom);
}

}  // namespace

// The worked example: a 320 x 240 I420 frame in textures of 512 x 256 (Y) and 256 x 128 (U,
// V); its whole source rectangle runs from texel 0 to the last texel, 319 and 239.
TEST_F(Drawing, PowerOfTwoCoordinatesEndOnTheLastTexel) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const ScopedValue<bool> nonPow2(OpenGLRenderer::m_isNonPow2Supported, false);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(320, 240))));
  EXPECT_EQ(wxSize(512, 256), TextureSize(GL_TEXTURE_2D, renderer->m_textures.at(0)));
  EXPECT_EQ(wxSize(256, 128), TextureSize(GL_TEXTURE_2D, renderer->m_textures.at(1)));
  EXPECT_EQ(wxSize(256, 128), TextureSize(GL_TEXTURE_2D, renderer->m_textures.at(2)));
  ExpectCoordinates({0.0f, 0.0f, 319.0f / 512, 239.0f / 256},
                    renderer->SourceCoordinates(wxRect(0, 0, 320, 240), false));
  ExpectCoordinates({10.0f / 512, 20.0f / 256, 109.0f / 512, 69.0f / 256},
                    renderer->SourceCoordinates(wxRect(10, 20, 100, 50), false));
}

// Rectangle textures keep texel coordinates, as their programs expect.
TEST_F(Drawing, PackedFrameCoordinatesStayInTexels) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const ScopedValue<bool> nonPow2(OpenGLRenderer::m_isNonPow2Supported, false);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_YUYV, wxSize(320, 240))));
  ExpectCoordinates({0.0f, 0.0f, 319.0f, 239.0f},
                    renderer->SourceCoordinates(wxRect(0, 0, 320, 240), true));
}

// The last vertex of the video quad (its bottom-left corner) leaves its coordinate behind:
// the left edge and the last row's texel, on every unit of a planar set.
TEST_F(Drawing, VideoQuadCarriesTheCoordinatesOnEveryUnit) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const ScopedValue<bool> nonPow2(OpenGLRenderer::m_isNonPow2Supported, false);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(320, 240))));
  PaintFrame(renderer);
  for (const GLenum unit : {GL_TEXTURE0, GL_TEXTURE1, GL_TEXTURE2}) {
    glActiveTexture(unit);
    GLfloat coordinate[4] = {};
    glGetFloatv(GL_CURRENT_TEXTURE_COORDS, coordinate);
    EXPECT_FLOAT_EQ(0.0f, coordinate[0]);
    EXPECT_FLOAT_EQ(239.0f / 256, coordinate[1]);
  }
  glActiveTexture(GL_TEXTURE0);
}

// ---- Opacity
// -------------------------------------------------------------------------------------

// Opacity 128: an RGB24 frame takes alpha 128/255 and an I420 frame alpha 1. The frame is
// drawn a second time in the overlay pass, where blending is on, over an opaque green
// rectangle (the primitive itself, which takes no opacity), so the alpha shows.
TEST_F(Drawing, OpacityAppliesToRgbFramesButNotToPlanarOnes) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  renderer->SetOpacity(128);
  const wxSize size = tile->GetClientSize();
  OverlayFunction overGreen([renderer, size](IRenderer*, wxDC* dc) {
    renderer->DoDrawRect(dc, wxRect(size), *wxGREEN);
    renderer->DrawFrame(dc);
  });
  renderer->SetDrawOverlaysHandler(&overGreen);
  const int rounding = 1;  // the blend rounds once per channel
  GLfloat colour[4] = {};

  ASSERT_TRUE(Feed(
      renderer, FramePicture::MakeRgb(PIXEL_FORMAT_RGB24, size, [](int, int) { return *wxBLUE; })));
  wxImage drawn = PaintFrame(renderer);
  glGetFloatv(GL_CURRENT_COLOR, colour);
  EXPECT_FLOAT_EQ(128 / 255.0f, colour[3]);
  EXPECT_TRUE(PixelNear(drawn, 100, 75, wxColour(0, 127, 128), rounding)) << "half blue";

  const FramePicture::Yuv white{235, 128, 128};
  ASSERT_TRUE(Feed(renderer, FramePicture::Solid(PIXEL_FORMAT_I420, size, white)));
  drawn = PaintFrame(renderer);
  glGetFloatv(GL_CURRENT_COLOR, colour);
  EXPECT_FLOAT_EQ(1.0f, colour[3]);
  EXPECT_TRUE(
      PixelNear(drawn, 100, 75, FramePicture::ProgramColour(white), kYuvConversionTolerance))
      << "opaque white";
  renderer->SetDrawOverlaysHandler(nullptr);
}

// ---- State -------------------------------------------------------------------------------------

namespace {

struct DrawState {
  bool fragmentProgram;
  GLint program;
  GLint activeUnit;
  GLint matrixMode;
  bool textures[3][2];  // per unit: 2-D, rectangle
};

DrawState CurrentDrawState() {
  DrawState state = {};
  state.fragmentProgram = glIsEnabled(GL_FRAGMENT_PROGRAM_ARB);
  state.program = BoundProgram();
  glGetIntegerv(GL_ACTIVE_TEXTURE, &state.activeUnit);
  glGetIntegerv(GL_MATRIX_MODE, &state.matrixMode);
  for (int unit = 0; unit < 3; ++unit) {
    glActiveTexture(GL_TEXTURE0 + unit);
    state.textures[unit][0] = glIsEnabled(GL_TEXTURE_2D);
    state.textures[unit][1] = glIsEnabled(GL_TEXTURE_RECTANGLE_ARB);
  }
  glActiveTexture(static_cast<GLenum>(state.activeUnit));
  return state;
}

}  // namespace

// After the frame: no program, no texturing on any unit, unit 0 active, the model-view matrix
// selected, for every format.
TEST_F(Drawing, FramesLeaveNoProgramOrTexturingBehind) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  for (const int format :
       {PIXEL_FORMAT_I420, PIXEL_FORMAT_NV12, PIXEL_FORMAT_UYVY, PIXEL_FORMAT_RGBA32}) {
    ASSERT_TRUE(Feed(renderer, FramePicture::Bars(format, wxSize(64, 48))));
    DrawState during = {};
    OverlayFunction look([&during](IRenderer*, wxDC*) { during = CurrentDrawState(); });
    renderer->SetDrawOverlaysHandler(&look);
    PaintFrame(renderer);
    renderer->SetDrawOverlaysHandler(nullptr);
    EXPECT_FALSE(during.fragmentProgram) << format;
    EXPECT_EQ(0, during.program) << format;
    EXPECT_EQ(GL_TEXTURE0, during.activeUnit) << format;
    EXPECT_EQ(GL_MODELVIEW, during.matrixMode) << format;
    for (const auto& unit : during.textures) {
      EXPECT_FALSE(unit[0] || unit[1]) << format;
    }
    GLdouble matrix[16] = {};
    glGetDoublev(GL_TEXTURE_MATRIX, matrix);
    EXPECT_EQ(1.0, matrix[0]);
    EXPECT_EQ(0.0, matrix[12]);
  }
}

// A planar set without its program is a logic error, reported by the range check.
TEST_F(Drawing, PlanarSetWithoutAProgramThrows) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(64, 48))));
  std::vector<unsigned int> programs;
  programs.swap(renderer->m_programs);
  EXPECT_THROW(renderer->PositionYV12Texture(0, 0, 1, 1, wxRect(0, 0, 10, 10)), std::out_of_range);
  glDisable(GL_FRAGMENT_PROGRAM_ARB);
  programs.swap(renderer->m_programs);
}

// Drawing ends any glyph batch: the active overlay font's bracket is closed, which unbinds its
// page.
TEST_F(Drawing, DrawingAQuadEndsTheActiveFontsBracket) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_RGB24, wxSize(64, 48))));
  wxGLFont font(*wxNORMAL_FONT);
  renderer->SetActiveOverlayFont(&font);
  EXPECT_EQ(&font, renderer->m_activeOverlayFont);
  glEnable(GL_TEXTURE_2D);
  font.WriteText("A", 0, 0, 0);
  glDisable(GL_TEXTURE_2D);
  GLint page = 0;
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &page);
  EXPECT_NE(0, page);
  renderer->SetActiveOverlayFont(&font);  // already active: the bracket stays open
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &page);
  EXPECT_NE(0, page);
  renderer->SetActiveOverlayFont(nullptr);
  glGetIntegerv(GL_TEXTURE_BINDING_2D, &page);
  EXPECT_EQ(0, page);
  renderer->SetActiveOverlayFont(&font);
  renderer->DrawFrame(nullptr);
  EXPECT_EQ(nullptr, renderer->m_activeOverlayFont);
  EXPECT_TRUE(NoGLError());
}

// ---- Images ----------------------------------------------------------------------------------

namespace {

class Images : public GLFrameTest, public ::testing::WithParamInterface<bool> {
 protected:
  // Paints the renderer with `draw` as its overlay pass.
  wxImage PaintOverlays(GLTestRenderer* renderer,
                        const std::function<void(IRenderer*, wxDC*)>& draw) {
    OverlayFunction overlays(draw);
    renderer->SetDrawOverlaysHandler(&overlays);
    const wxImage drawn = PaintFrame(renderer);
    renderer->SetDrawOverlaysHandler(nullptr);
    return drawn;
  }
};

// Blocks of the palette, opaque.
wxImage BlockImage(const wxSize& size) {
  wxImage image(size);
  image.InitAlpha();
  for (int y = 0; y < size.y; ++y) {
    for (int x = 0; x < size.x; ++x) {
      const wxColour& colour =
          FramePicture::RgbPalette()[((y / 10) * 13 + x / 10) % FramePicture::RgbPalette().size()];
      image.SetRGB(x, y, colour.Red(), colour.Green(), colour.Blue());
      image.SetAlpha(x, y, 255);
    }
  }
  return image;
}

}  // namespace

// An image of 100 x 50 at (10, 20): the quad covers (10, 20) to (109, 69), with coordinates up
// to 100 / tw and 50 / th (one past the last texel).
TEST_P(Images, ImageIsDrawnWithOnePastTheEndCoordinates) {
  GLTestRenderer* renderer = MakeCurrentRenderer(GetParam());
  const wxImage picture = BlockImage(wxSize(100, 50));
  IRendererImage* image = renderer->CreateImage(picture);
  ASSERT_TRUE(image->IsOk());
  EXPECT_EQ(wxSize(100, 50), image->GetSize());
  const auto* glImage = dynamic_cast<OpenGLImage*>(image);
  ASSERT_NE(nullptr, glImage);
  EXPECT_EQ(wxSize(104, 50), glImage->GetTextureSize());
  EXPECT_EQ(GetParam(), glImage->GetBuffer() != 0);
  EXPECT_TRUE(renderer->m_textures.empty()) << "the image owns its texture";
  EXPECT_TRUE(renderer->m_pixelBuffers.empty()) << "and its buffer";
  if (glImage->GetBuffer()) {
    EXPECT_FALSE(IsBufferMapped(glImage->GetBuffer()));
  }

  const wxImage drawn = PaintOverlays(
      renderer, [image](IRenderer* target, wxDC* dc) { target->DrawImage(dc, image, 10, 20); });
  GLint subpixelBits = 0;
  glGetIntegerv(GL_SUBPIXEL_BITS, &subpixelBits);
  wxImage expected;
  ASSERT_TRUE(ExpectedPicture(
      tile->GetClientSize(), kTileColour, QuadPlacement{wxRect(10, 20, 100, 50), 0, 0, 100, 50},
      TexelSource{picture.GetSize(),
                  [&picture](int x, int y) {
                    return wxColour(picture.GetRed(x, y), picture.GetGreen(x, y),
                                    picture.GetBlue(x, y));
                  }},
      subpixelBits, &expected));
  EXPECT_TRUE(ImagesNear(drawn, expected, kExactPixels, TestName()));
  renderer->DeleteImage(image);
}

// The image's alpha and the renderer's opacity both fade it.
TEST_P(Images, ImageIsFadedByItsAlphaAndTheOpacity) {
  GLTestRenderer* renderer = MakeCurrentRenderer(GetParam());
  wxImage picture = SolidImage(wxSize(40, 40), *wxRED);
  picture.InitAlpha();
  for (int y = 0; y < 40; ++y) {
    for (int x = 0; x < 40; ++x) picture.SetAlpha(x, y, x < 20 ? 255 : 128);
  }
  IRendererImage* image = renderer->CreateImage(picture);
  renderer->SetOpacity(128);
  const wxImage drawn = PaintOverlays(
      renderer, [image](IRenderer* target, wxDC* dc) { target->DrawImage(dc, image, 20, 20); });
  auto blend = [](int over, int under, double alpha) {
    return static_cast<unsigned char>(std::lround(over * alpha + under * (1 - alpha)));
  };
  const double half = 128 / 255.0;
  const wxColour faded(blend(255, kTileColour.Red(), half), blend(0, kTileColour.Green(), half),
                       blend(0, kTileColour.Blue(), half));
  const wxColour quarter(blend(255, kTileColour.Red(), half * half),
                         blend(0, kTileColour.Green(), half * half),
                         blend(0, kTileColour.Blue(), half * half));
  const int rounding = 1;  // the blend rounds once per channel
  EXPECT_TRUE(PixelNear(drawn, 25, 30, faded, rounding));
  EXPECT_TRUE(PixelNear(drawn, 50, 30, quarter, rounding));
  renderer->DeleteImage(image);
}

// Each bitmap draw makes a texture, draws it and deletes it again.
TEST_P(Images, BitmapIsDrawnThroughAnImageOfItsOwn) {
  GLTestRenderer* renderer = MakeCurrentRenderer(GetParam());
  const wxImage picture = BlockImage(wxSize(30, 20));
  const wxImage drawn = PaintOverlays(renderer, [&picture](IRenderer* target, wxDC* dc) {
    target->DrawBitmap(dc, wxBitmap(picture), 40, 50);
  });
  EXPECT_TRUE(renderer->m_images.empty());
  EXPECT_TRUE(PixelNear(
      drawn, 41, 51, wxColour(picture.GetRed(1, 1), picture.GetGreen(1, 1), picture.GetBlue(1, 1)),
      kExactPixels));
  EXPECT_TRUE(
      PixelNear(drawn, 55, 60,
                wxColour(picture.GetRed(15, 10), picture.GetGreen(15, 10), picture.GetBlue(15, 10)),
                kExactPixels));
  EXPECT_TRUE(PixelNear(drawn, 39, 50, kTileColour, kExactPixels));
  GLint textures = 0;
  for (unsigned int name = 1; name < 100; ++name) textures += glIsTexture(name) ? 1 : 0;
  EXPECT_EQ(0, textures);
}

// An image placed just before INT_MAX lies wholly off the tile: its far edge is summed wider
// than int, where it used to wrap round and stretch the image across the tile.
TEST_P(Images, ImageNearTheIntLimitStaysOffTheTile) {
  GLTestRenderer* renderer = MakeCurrentRenderer(GetParam());
  IRendererImage* image = renderer->CreateImage(BlockImage(wxSize(100, 50)));
  const wxImage drawn = PaintOverlays(renderer, [image](IRenderer* target, wxDC* dc) {
    target->DrawImage(dc, image, INT_MAX - 5, 20);
    target->DrawImage(dc, image, 20, INT_MAX - 5);
  });
  EXPECT_TRUE(ImagesNear(drawn, BackgroundImage(), kExactPixels, TestName()));
  renderer->DeleteImage(image);
}

// An invalid bitmap is ignored: the toolkit asserts on converting one to an image.
TEST_P(Images, InvalidBitmapIsIgnored) {
  GLTestRenderer* renderer = MakeCurrentRenderer(GetParam());
  const wxImage drawn = PaintOverlays(
      renderer, [](IRenderer* target, wxDC* dc) { target->DrawBitmap(dc, wxNullBitmap, 10, 10); });
  EXPECT_TRUE(ImagesNear(drawn, BackgroundImage(), kExactPixels, TestName()));
  EXPECT_TRUE(renderer->m_images.empty());
}

INSTANTIATE_TEST_SUITE_P(BothPaths, Images, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) {
                           return std::string(info.param ? "PixelBuffers" : "Client");
                         });

// Images are made between frames without disturbing them: the frame's textures, buffers and
// lent planes stay as they were.
TEST_F(Drawing, ImageMadeWhileAFrameIsLentLeavesTheFrameAlone) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const FramePicture picture = FramePicture::Bars(PIXEL_FORMAT_I420, tile->GetClientSize());
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(200, 150, PIXEL_FORMAT_I420, planes, pitches));
  const std::vector<unsigned int> textures = renderer->m_textures;
  const std::vector<unsigned int> buffers = renderer->m_pixelBuffers;
  IRendererImage* image = renderer->CreateImage(BlockImage(wxSize(16, 16)));
  EXPECT_TRUE(image->IsOk());
  EXPECT_EQ(textures, renderer->m_textures);
  EXPECT_EQ(buffers, renderer->m_pixelBuffers);
  EXPECT_TRUE(WrittenFrameIsShown(renderer, picture, planes, pitches));
  renderer->DeleteImage(image);
}

// Through client memory as well: an image has scratch memory of its own, so the lent frame
// buffer neither shrinks under the decoder's planes (a small image) nor moves away from them
// (a large one), and the frame written into them is the one shown.
TEST_F(Drawing, ImageMadeWhileAClientMemoryFrameIsLentLeavesItsPlanesAlone) {
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  const FramePicture picture = FramePicture::Bars(PIXEL_FORMAT_I420, tile->GetClientSize());
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(200, 150, PIXEL_FORMAT_I420, planes, pitches));
  const size_t lentBytes = renderer->m_frameBuffer.size();
  IRendererImage* small = renderer->CreateImage(BlockImage(wxSize(16, 16)));
  ASSERT_EQ(lentBytes, renderer->m_frameBuffer.size());
  IRendererImage* large = renderer->CreateImage(BlockImage(wxSize(256, 256)));
  ASSERT_EQ(lentBytes, renderer->m_frameBuffer.size());
  ASSERT_EQ(renderer->m_frameBuffer.data(), planes[0]);
  EXPECT_TRUE(small->IsOk());
  EXPECT_TRUE(large->IsOk());
  EXPECT_TRUE(WrittenFrameIsShown(renderer, picture, planes, pitches));
  renderer->DeleteImage(small);
  renderer->DeleteImage(large);
}

TEST_F(Drawing, ImageTooLargeForATextureIsNotOk) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  IRendererImage* image = renderer->CreateImage(wxImage(OpenGLRenderer::m_maxTextureSize.x, 1));
  ASSERT_NE(nullptr, image);
  EXPECT_FALSE(image->IsOk());
  EXPECT_EQ(wxDefaultSize, image->GetSize());
  EXPECT_EQ(wxDefaultSize, dynamic_cast<OpenGLImage*>(image)->GetTextureSize());
  IRendererImage* invalid = renderer->CreateImage(wxImage());
  EXPECT_FALSE(invalid->IsOk());
  OverlayFunction overlays([image, invalid](IRenderer* target, wxDC* dc) {
    target->DrawImage(dc, image, 10, 10);
    target->DrawImage(dc, invalid, 10, 10);
    target->DrawImage(dc, nullptr, 10, 10);
  });
  renderer->SetDrawOverlaysHandler(&overlays);
  EXPECT_TRUE(ImagesNear(PaintFrame(renderer), BackgroundImage(), kExactPixels, TestName()));
  renderer->SetDrawOverlaysHandler(nullptr);
}

// An image of another back-end is not this renderer's to draw.
TEST_F(Drawing, ForeignImageIsIgnored) {
  class ForeignImage : public IRendererImage {
   public:
    bool IsOk() const override { return true; }
    wxSize GetSize() const override { return wxSize(20, 20); }
  } foreign;
  GLTestRenderer* renderer = MakeCurrentRenderer();
  OverlayFunction overlays(
      [&foreign](IRenderer* target, wxDC* dc) { target->DrawImage(dc, &foreign, 10, 10); });
  renderer->SetDrawOverlaysHandler(&overlays);
  EXPECT_TRUE(ImagesNear(PaintFrame(renderer), BackgroundImage(), kExactPixels, TestName()));
  renderer->SetDrawOverlaysHandler(nullptr);
}

// The renderer's images go with it while its context is still current, so their textures do
// not outlive it in the share group that another renderer keeps alive.
TEST_F(Drawing, ImagesGoWithTheirRenderer) {
  GLTestRenderer* first = MakeCurrentRenderer();
  wxWindow* secondTile = MakeTile(wxPoint(220, 10), wxSize(80, 60));
  GLTestRenderer* second = MakeRenderer(secondTile);
  second->SetCurrent();
  auto* image = dynamic_cast<OpenGLImage*>(second->CreateImage(BlockImage(wxSize(16, 16))));
  ASSERT_NE(nullptr, image);
  const unsigned int texture = image->GetTexture();
  ASSERT_TRUE(glIsTexture(texture));
  DestroyRenderer(second);
  first->SetCurrent();
  EXPECT_FALSE(glIsTexture(texture));
}
