// The GL back-end's seams made to fail on purpose through GLFaults: no GL visual, a context
// that cannot be made current, a texture proxy that refuses every size, a fragment program that
// does not compile, a pixel buffer that does not map, a GL error after the upload. In every case
// the tile ends up showing the video in software, as the X server shows it, and goes on showing
// the pictures that follow.
#include <string>

#include <decompressor/CDecompressor.h>
#include <renderer/GLFaults.h>
#include <renderer/InternalGLCanvas.h>
#include <renderer/NativeRenderer.h>

#include "FacadeTest.h"
#include "TestFrame.h"

namespace {

const Rgb kQuadrants[4] = {{200, 40, 40}, {40, 180, 60}, {50, 60, 210}, {230, 220, 90}};
// libswscale's conversion and scaling against the reference, in the middle of solid quadrants.
constexpr int kShownTolerance = 8;
// A 16:9 picture in the 200 x 150 tile: the full width, 112 rows, 19 rows of bar above.
const wxRect kLetterbox(0, 19, 200, 112);

// The colour of quadrant `quadrant` (0 top left, 1 top right, 2 bottom left, 3 bottom right)
// of picture `turn`: each picture turns the colours one place on.
Rgb QuadrantColour(int quadrant, int turn) { return kQuadrants[(quadrant + turn) % 4]; }

// The colour a quadrant comes back as from limited-range YUV.
wxColour ShownColour(const Rgb& rgb) {
  const Rgb shown = ReferenceYuvToRgb(ReferenceRgbToYuv(rgb));
  return wxColour(shown.r, shown.g, shown.b);
}

// The decoder holds picture `turn`: four solid quadrants, in I420.
void PutPicture(CDecompressor& decoder, const wxSize& size, int turn) {
  TestFrame frame(PIXEL_FORMAT_I420, size.x, size.y);
  frame.Paint([&](int x, int y) {
    return QuadrantColour((x < size.x / 2 ? 0 : 1) + (y < size.y / 2 ? 0 : 2), turn);
  });
  ASSERT_EQ(DECOMP_OK, decoder.PutFrame(frame.Planes(), frame.Pitches(), PIXEL_FORMAT_I420, size.x,
                                        size.y, 0));
}

const wxSize kFirstSize(320, 180);
// A later size, so that the back-end makes its textures (and program) anew under the fault.
const wxSize kLaterSize(384, 216);

class GLFaultDrill : public ScreenFacadeTest {
 protected:
  void TearDown() override {
    GLFaults::Clear();
    ScreenFacadeTest::TearDown();
  }

  // Hosts `frames` frames of picture `turn` at `size`, as a decoding loop does.
  void Play(TestRenderer* facade, const wxSize& size, int turn, int frames) {
    PutPicture(decoder, size, turn);
    for (int frame = 0; frame < frames; ++frame) HostFrame(*facade, decoder, tile);
  }

  // Whether the screen shows picture `turn` letterboxed in the tile, with the bar above it in
  // the tile's colour.
  ::testing::AssertionResult ShowsPicture(int turn) {
    const wxImage shown = ReadShown(tile);
    ::testing::AssertionResult bar = PixelNear(shown, 100, 5, kTileColour, kShownTolerance);
    if (!bar) return bar << " (the bar above the picture)";
    for (int quadrant = 0; quadrant < 4; ++quadrant) {
      const int x = kLetterbox.x + kLetterbox.width / 4 + (quadrant % 2) * kLetterbox.width / 2;
      const int y = kLetterbox.y + kLetterbox.height / 4 + (quadrant / 2) * kLetterbox.height / 2;
      ::testing::AssertionResult pixel =
          PixelNear(shown, x, y, ShownColour(QuadrantColour(quadrant, turn)), kShownTolerance);
      if (!pixel) return pixel << " (quadrant " << quadrant << " of picture " << turn << ")";
    }
    return ::testing::AssertionSuccess();
  }

  // A GL facade that has shown picture 0 through the GL back-end.
  TestRenderer* FacadeShowingGL() {
    TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
    EXPECT_NE(nullptr, dynamic_cast<OpenGLRenderer*>(facade->m_renderer));
    Play(facade, kFirstSize, 0, 2);
    EXPECT_TRUE(ShowsPicture(0));
    EXPECT_FALSE(facade->IsInSoftwareFallback());
    return facade;
  }

  // With the fault in force: pictures 1 and then 2 at the later size end up in software, on
  // screen; the first frame after the fault may be dropped by the switch.
  void ExpectSoftwareVideo(TestRenderer* facade) {
    Play(facade, kLaterSize, 1, 3);
    EXPECT_TRUE(dynamic_cast<NativeRenderer*>(facade->m_renderer) != nullptr)
        << "the frames are drawn in software";
    EXPECT_TRUE(ShowsPicture(1));
    Play(facade, kLaterSize, 2, 2);
    EXPECT_TRUE(ShowsPicture(2)) << "later frames are painted";
  }

  // A GL facade shows picture 0 on GL; then, under `fault`, pictures 1 and 2 end up in software
  // through the fallback.
  void ExpectFallbackUnder(GLFault fault) {
    TestRenderer* facade = FacadeShowingGL();
    const ScopedGLFault injected(fault);
    ExpectSoftwareVideo(facade);
    EXPECT_TRUE(facade->IsInSoftwareFallback());
  }

  CDecompressor decoder;
};

// A display without a GL visual (no GLX, or no GL at all): the GL back-end is not built on
// it, OpenGL counts as unsupported, and the facade asked for OpenGL draws in software.
TEST_F(GLFaultDrill, NoGLVisualGivesTheSoftwareBackEnd) {
  const ScopedGLFault fault(GLFault::NoVisual);
  TestRenderer* facade = MakeFacade(RENDER_MODE_OPENGL);
  EXPECT_TRUE(CanvasesOn(tile).empty()) << "no GL canvas on a display without a visual";
  EXPECT_FALSE(Renderer::IsRenderModeSupported(RENDER_MODE_OPENGL));
  EXPECT_EQ(RENDER_MODE_SOFTWARE, facade->m_primaryMode);
  ExpectSoftwareVideo(facade);
}

// The context cannot be made current while another tile's context is: nothing may go into
// that context, so no frame buffer is lent and the facade falls back.
TEST_F(GLFaultDrill, AContextThatCannotBeMadeCurrentFallsBack) {
  wxWindow* otherTile = MakeTile(wxPoint(220, 10), wxSize(80, 60));
  GLTestRenderer* other = MakeRenderer(otherTile);
  TestRenderer* facade = FacadeShowingGL();
  other->SetCurrent();  // the context the failed switch would leave current
  const ScopedGLFault fault(GLFault::MakeCurrent);
  const LogCapture log;
  ExpectSoftwareVideo(facade);
  EXPECT_TRUE(facade->IsInSoftwareFallback());
  EXPECT_EQ(1, log.Count("OpenGL Error - Failed to make the context current"));
}

TEST_F(GLFaultDrill, ATextureProxyRefusingEverySizeFallsBack) {
  ExpectFallbackUnder(GLFault::TextureProxy);
}

TEST_F(GLFaultDrill, AFragmentProgramThatDoesNotCompileFallsBack) {
  const LogCapture log;
  ExpectFallbackUnder(GLFault::ProgramCompile);
  bool compileFailureLogged = false;
  for (const std::string& line : log.Texts()) {
    compileFailureLogged |= line.rfind("OpenGL Error - Failed to create shader: ", 0) == 0;
  }
  EXPECT_TRUE(compileFailureLogged) << "the driver's own refusal is reported";
}

TEST_F(GLFaultDrill, APixelBufferThatDoesNotMapFallsBack) {
  ASSERT_TRUE(OpenGLRenderer::m_isPixelBufferSupported) << "the drill needs pixel buffers";
  ExpectFallbackUnder(GLFault::PixelBufferMap);
}

// The upload raises a GL error: the frame is not taken, and the next frames go to software.
TEST_F(GLFaultDrill, AGLErrorAfterTheUploadFallsBack) {
  const LogCapture log;
  ExpectFallbackUnder(GLFault::ErrorAfterUpload);
  EXPECT_EQ(1, log.Count("OpenGL Error - Failed to upload the frame: invalid value (1281)"));
  EXPECT_EQ(1, log.Count("Renderer Information - Call to FlushFrameBuffer failed. Switching to "
                         "software mode..."));
}

}  // namespace
