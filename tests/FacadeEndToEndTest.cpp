// The facade end to end, as a host drives it: the real decoder fed raw or encoded pictures,
// NegotiateFormat + CopyFrame + a paint per frame, and what the X server shows compared with
// the picture, letterboxed by the aspect rule, on the OpenGL and the software back-end; and the
// fallback on the real GL back-end, there and back, with overlays and a host image.
#include <wx/dcclient.h>

#include <decompressor/CDecompressor.h>
#include <renderer/InternalGLCanvas.h>
#include <renderer/NativeRenderer.h>

#include "ColourReference.h"
#include "FacadeTest.h"
#include "SampleImage.h"
#include "TestEncoder.h"
#include "TestFrame.h"

namespace {

// A decoded picture on screen against the reference conversion. libswscale rounds the BT.601
// conversion its own way; the GL programs subtract their black level after scaling luma
// (1.1643 Y - 0.0625) rather than before, which shows about three levels brighter.
constexpr int kShownFrameTolerance = kYuvConversionTolerance + 3;
// An encoded picture also carries the codec's loss, largest beside the quadrant boundaries.
constexpr int kEncodedFrameTolerance = 10;
// Pixels this close to an edge of the picture or of a quadrant are left out: the two
// back-ends' scalers place those boundaries up to a pixel apart, and chroma blends there.
constexpr int kEdgeMargin = 3;

const Rgb kQuadrants[4] = {{200, 40, 40}, {40, 180, 60}, {50, 60, 210}, {230, 220, 90}};

int QuadrantOf(int x, int y, int width, int height) {
  return (x < width / 2 ? 0 : 1) + (y < height / 2 ? 0 : 2);
}

// A quadrant's colour as it comes back from limited-range YUV.
wxColour ShownColour(int quadrant) {
  const Rgb shown = ReferenceYuvToRgb(ReferenceRgbToYuv(kQuadrants[quadrant]));
  return wxColour(shown.r, shown.g, shown.b);
}

// An I420 picture of four solid quadrants.
TestFrame QuadrantFrame(int width, int height) {
  TestFrame frame(PIXEL_FORMAT_I420, width, height);
  frame.Paint([=](int x, int y) { return kQuadrants[QuadrantOf(x, y, width, height)]; });
  return frame;
}

void PutQuadrants(CDecompressor& decoder, int width, int height) {
  TestFrame frame = QuadrantFrame(width, height);
  ASSERT_EQ(DECOMP_OK,
            decoder.PutFrame(frame.Planes(), frame.Pitches(), PIXEL_FORMAT_I420, width, height, 0));
}

// Whether (x, y) lies within the margin of a line at `edge`.
bool Near(int value, int edge) { return value >= edge - kEdgeMargin && value < edge + kEdgeMargin; }

// The tile as it should look: the quadrant picture in `picture`, the background elsewhere.
// Pixels beside the picture's edges and the quadrant boundaries are taken from `shown`.
wxImage ExpectedTile(const wxImage& shown, const wxRect& picture, const wxColour& background) {
  wxImage expected = SolidImage(shown.GetSize(), background);
  const int middleX = picture.x + picture.width / 2;
  const int middleY = picture.y + picture.height / 2;
  for (int y = 0; y < shown.GetHeight(); ++y) {
    for (int x = 0; x < shown.GetWidth(); ++x) {
      const bool nearEdge = Near(x, picture.x) || Near(x, picture.GetRight() + 1) ||
                            Near(y, picture.y) || Near(y, picture.GetBottom() + 1);
      const bool inside = picture.Contains(x, y);
      if (nearEdge || (inside && (Near(x, middleX) || Near(y, middleY)))) {
        expected.SetRGB(x, y, shown.GetRed(x, y), shown.GetGreen(x, y), shown.GetBlue(x, y));
      } else if (inside) {
        const wxColour c =
            ShownColour(QuadrantOf(x - picture.x, y - picture.y, picture.width, picture.height));
        expected.SetRGB(x, y, c.Red(), c.Green(), c.Blue());
      }
    }
  }
  return expected;
}

// One frame as a host's decoding loop moves it: negotiate, copy, paint the tile.
bool ShowFrame(Renderer& facade, CDecompressor& decoder, wxWindow* tile) {
  return HostFrame(facade, decoder, tile).copied;
}

bool IsOnGL(IRenderer* backend) { return dynamic_cast<OpenGLRenderer*>(backend) != nullptr; }

// A 16:9 picture in the 200 x 150 tile: the full width, 112 rows, 19 rows of bar above.
const wxRect kLetterbox(0, 19, 200, 112);

class EndToEnd : public ScreenFacadeTest, public ::testing::WithParamInterface<RenderMode> {
 protected:
  ::testing::AssertionResult TileShows(const wxRect& picture, int tolerance,
                                       const std::string& name) {
    const wxImage shown = ReadShown(tile);
    return ImagesNear(shown, ExpectedTile(shown, picture, kTileColour), tolerance, name);
  }
};

TEST_P(EndToEnd, RawPicturesShowLetterboxed) {
  TestRenderer* facade = MakeFacade(GetParam());
  ASSERT_EQ(GetParam() == RENDER_MODE_OPENGL, IsOnGL(facade->m_renderer));
  CDecompressor decoder;
  PutQuadrants(decoder, 320, 180);
  // The first frame goes whole to the back-end; later ones of a software facade are scaled by
  // the decoder to the size shown.
  for (int frame = 0; frame < 3; ++frame) {
    ASSERT_TRUE(ShowFrame(*facade, decoder, tile));
    EXPECT_TRUE(TileShows(kLetterbox, kShownFrameTolerance, "raw-" + std::to_string(frame)));
  }
  EXPECT_FALSE(facade->IsInSoftwareFallback());
}

TEST_P(EndToEnd, EncodedStreamShowsLetterboxed) {
  TestEncoder encoder("libx264", 320, 180, 25);
  ASSERT_TRUE(encoder.IsOpen());
  TestFrame picture = QuadrantFrame(320, 180);
  for (int frame = 0; frame < 3; ++frame) {
    ASSERT_TRUE(encoder.Encode(picture.Planes(), picture.Pitches(), frame));
  }
  ASSERT_TRUE(encoder.Finish());
  CDecompressor decoder;
  ASSERT_EQ(DECOMP_OK, decoder.Open(encoder.StreamInfo()));
  for (const EncodedPacket& packet : encoder.Packets()) {
    decoder.Decode(packet.data.data(), static_cast<int>(packet.data.size()), packet.pts);
  }
  decoder.Drain();
  ASSERT_TRUE(decoder.HasFrame());

  TestRenderer* facade = MakeFacade(GetParam());
  ASSERT_TRUE(ShowFrame(*facade, decoder, tile));
  EXPECT_TRUE(TileShows(kLetterbox, kEncodedFrameTolerance, "encoded"));
}

INSTANTIATE_TEST_SUITE_P(OpenGLAndSoftware, EndToEnd,
                         ::testing::Values(RENDER_MODE_OPENGL, RENDER_MODE_SOFTWARE));

// ---- Fallback on the real GL back-end --------------------------------------------------------

const wxColour kOverlayBox(250, 250, 250);
const wxColour kLogoColour(255, 0, 255);
const wxRect kOverlayRect(150, 2, 40, 10);  // in the bar above the picture
const wxPoint kLogoPlace(10, 2);

class Fallback : public ScreenFacadeTest {
 protected:
  // A GL facade with a box and a logo drawn over every frame.
  TestRenderer* MakeDecoratedFacade() {
    TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
    logo = facade->CreateImage(SolidImage(wxSize(8, 8), kLogoColour));
    overlays = std::make_unique<OverlayFunction>([this, facade](IRenderer*, wxDC* dc) {
      facade->DrawRect(dc, kOverlayRect, kOverlayBox);
      facade->DrawImage(dc, logo, kLogoPlace.x, kLogoPlace.y);
    });
    facade->SetDrawOverlaysHandler(overlays.get());
    return facade;
  }

  ::testing::AssertionResult OverlaysShown() {
    const wxImage shown = ReadShown(tile);
    const wxPoint boxCentre(kOverlayRect.x + kOverlayRect.width / 2,
                            kOverlayRect.y + kOverlayRect.height / 2);
    ::testing::AssertionResult box =
        PixelNear(shown, boxCentre.x, boxCentre.y, kOverlayBox, kExactPixels);
    if (!box) return box;
    return PixelNear(shown, kLogoPlace.x + 4, kLogoPlace.y + 4, kLogoColour, kExactPixels);
  }

  ::testing::AssertionResult TileShows(const wxRect& picture, const std::string& name) {
    const wxImage shown = ReadShown(tile);
    wxImage expected = ExpectedTile(shown, picture, kTileColour);
    // The overlays lie in the bar; they are checked on their own.
    expected.Paste(shown.GetSubImage(wxRect(0, 0, shown.GetWidth(), picture.y)), 0, 0);
    return ImagesNear(shown, expected, kShownFrameTolerance, name);
  }

  IRendererImage* logo = nullptr;
  std::unique_ptr<OverlayFunction> overlays;
};

TEST_F(Fallback, FrameBeyondTheTextureLimitGoesToSoftwareAndBack) {
  TestRenderer* facade = MakeDecoratedFacade();
  ASSERT_TRUE(IsOnGL(facade->m_renderer));
  IRenderer* gl = facade->m_renderer;
  facade->SetAspectRatio(2.0f);  // a setting that must survive both switches
  const wxRect picture(0, 25, 200, 100);
  OpenGLRenderer::m_maxTextureSize = wxSize(100, 100);

  CDecompressor decoder;
  PutQuadrants(decoder, 96, 54);
  ASSERT_TRUE(ShowFrame(*facade, decoder, tile));
  EXPECT_TRUE(TileShows(picture, "gl-before"));
  EXPECT_TRUE(OverlaysShown());
  auto* image = dynamic_cast<RendererImage*>(logo);
  ASSERT_NE(nullptr, image);
  IRendererImage* glImage = image->m_backendImages.at(gl);

  // Larger than the textures may be, and so is the size it would be scaled to: software.
  PutQuadrants(decoder, 320, 180);
  for (int frame = 0; frame < 2; ++frame) {
    ASSERT_TRUE(ShowFrame(*facade, decoder, tile));
    ASSERT_TRUE(facade->IsInSoftwareFallback());
    EXPECT_FALSE(CanvasesOn(tile).at(0)->IsShown());
    EXPECT_TRUE(TileShows(picture, "software-" + std::to_string(frame)));
    EXPECT_TRUE(OverlaysShown());
  }
  IRenderer* software = facade->m_renderer;
  EXPECT_EQ(2u, image->m_backendImages.size());
  IRendererImage* softwareImage = image->m_backendImages.at(software);
  ShowFrame(*facade, decoder, tile);
  EXPECT_EQ(softwareImage, image->m_backendImages.at(software)) << "made once per back-end";

  // A frame that fits brings the GL back-end back, with its image and the settings.
  PutQuadrants(decoder, 96, 54);
  ASSERT_TRUE(ShowFrame(*facade, decoder, tile));
  EXPECT_FALSE(facade->IsInSoftwareFallback());
  EXPECT_EQ(gl, facade->m_renderer);
  EXPECT_TRUE(CanvasesOn(tile).at(0)->IsShown());
  EXPECT_FLOAT_EQ(2.0f, facade->GetAspectRatio());
  EXPECT_EQ(1u, image->m_backendImages.size());
  EXPECT_EQ(glImage, image->m_backendImages.at(gl)) << "the GL image is reused, not made again";
  PumpEvents();
  ShowFrame(*facade, decoder, tile);
  EXPECT_TRUE(TileShows(picture, "gl-after"));
  EXPECT_TRUE(OverlaysShown());
}

// A GL back-end whose next frame buffer can be made to fail.
class RefusingGLRenderer : public OpenGLRenderer {
 public:
  using OpenGLRenderer::GetFrameBuffer;
  using OpenGLRenderer::OpenGLRenderer;
  bool refuseNext = false;
  bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                      int* pitches) override {
    if (refuseNext) {
      refuseNext = false;
      return false;
    }
    return OpenGLRenderer::GetFrameBuffer(width, height, format, planes, pitches);
  }
};

TEST_F(Fallback, FailedFrameBufferDropsOneFrameAndSoftwareShowsTheNext) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
  auto* gl = new RefusingGLRenderer(tile);
  facade->InstallBackend(gl, RENDER_MODE_OPENGL);
  SettleGL(gl);
  CDecompressor decoder;
  PutQuadrants(decoder, 320, 180);
  ASSERT_TRUE(ShowFrame(*facade, decoder, tile));

  gl->refuseNext = true;
  LogCapture log;
  EXPECT_FALSE(ShowFrame(*facade, decoder, tile));
  EXPECT_EQ(1, log.Count("Renderer Information - Call to GetFrameBuffer failed. Switching to "
                         "software mode..."));
  EXPECT_TRUE(facade->IsInSoftwareFallback());

  ASSERT_TRUE(ShowFrame(*facade, decoder, tile));
  EXPECT_NE(nullptr, dynamic_cast<NativeRenderer*>(facade->m_renderer));
  EXPECT_TRUE(TileShows(kLetterbox, "software-after-failure"));
}

}  // namespace
