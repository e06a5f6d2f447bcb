// The facade's frame path on the real GL back-end without reading the screen: the software
// scaling threshold on real sizes, checked on the textures the back-end made, and many tiles
// at once with changing sizes, forced fallbacks and mode switches.
#include <algorithm>
#include <random>

#include <GL/gl.h>
#include <GL/glext.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CSyntheticCamera.h>

#include "FacadeTest.h"

namespace {

// Every texture of the current context's share group, by size (level 0).
std::vector<wxSize> LiveTextureSizes() {
  std::vector<wxSize> sizes;
  for (GLuint name = 1; name < 1024; ++name) {
    if (!glIsTexture(name)) continue;
    for (GLenum target : {GLenum(GL_TEXTURE_2D), GLenum(GL_TEXTURE_RECTANGLE_ARB)}) {
      glBindTexture(target, name);
      if (glGetError() != GL_NO_ERROR) continue;  // a texture of the other target
      GLint width = 0;
      GLint height = 0;
      glGetTexLevelParameteriv(target, 0, GL_TEXTURE_WIDTH, &width);
      glGetTexLevelParameteriv(target, 0, GL_TEXTURE_HEIGHT, &height);
      glBindTexture(target, 0);
      sizes.emplace_back(width, height);
      break;
    }
  }
  return sizes;
}

// Whether a texture holds a plane of `width` x `height`: the back-end pads a texture's rows
// by up to 8 texels beyond the plane's width.
bool HasPlaneTexture(const std::vector<wxSize>& sizes, int width, int height) {
  return std::any_of(sizes.begin(), sizes.end(), [=](const wxSize& size) {
    return size.y == height && size.x >= width && size.x <= width + 8;
  });
}

// The decoder holds one camera picture of `size`.
void PutCameraPicture(CDecompressor& decoder, const wxSize& size) {
  CSyntheticCamera camera(size.x, size.y, 25);
  camera.NextFrame();
  ASSERT_EQ(DECOMP_OK, decoder.PutFrame(camera.GetPlanes(), camera.GetPitches(), camera.GetFormat(),
                                        size.x, size.y, 0));
}

using FacadeGL = FacadeTest;

// 1920 x 1080 into 384 x 216 is shown at 4 % of its area: the decoder scales it to the tile's
// size and the GL back-end uploads that. Into 860 x 484 (20.07 %) the whole frame goes up.
TEST_F(FacadeGL, SmallTilesUploadTheScaledFrameLargeOnesTheWholeFrame) {
  frame->SetClientSize(900, 520);
  CDecompressor decoder;
  PutCameraPicture(decoder, wxSize(1920, 1080));

  wxWindow* small = MakeTile(wxPoint(0, 0), wxSize(384, 216));
  TestRenderer* scaled = MakeFacade(RENDER_MODE_OPENGL, small);
  const HostedFrame down = HostFrame(*scaled, decoder, small);
  EXPECT_TRUE(down.copied);
  EXPECT_EQ(384, down.width);
  EXPECT_EQ(216, down.height);
  EXPECT_FALSE(scaled->IsInSoftwareFallback());
  dynamic_cast<OpenGLRenderer*>(scaled->m_renderer)->SetCurrent();
  std::vector<wxSize> textures = LiveTextureSizes();
  EXPECT_TRUE(HasPlaneTexture(textures, 384, 216)) << "the luma plane at the scaled size";
  EXPECT_FALSE(HasPlaneTexture(textures, 1920, 1080));
  DestroyFacade(scaled);

  wxWindow* large = MakeTile(wxPoint(0, 0), wxSize(860, 484));
  TestRenderer* whole = MakeFacade(RENDER_MODE_OPENGL, large);
  const HostedFrame full = HostFrame(*whole, decoder, large);
  EXPECT_TRUE(full.copied);
  EXPECT_EQ(1920, full.width);
  EXPECT_EQ(1080, full.height);
  dynamic_cast<OpenGLRenderer*>(whole->m_renderer)->SetCurrent();
  textures = LiveTextureSizes();
  EXPECT_TRUE(HasPlaneTexture(textures, 1920, 1080)) << "the luma plane at the frame's size";
}

// Sixteen tiles in every mode, 500 frames each of changing sizes, with forced fallbacks and
// mode switches on the way: every frame is delivered or dropped by the rules, nothing crashes,
// and GL reports no error.
TEST_F(FacadeGL, SixteenTilesOfMixedModesSurviveChangingFrames) {
  constexpr int kTiles = 16;
  constexpr int kFrames = 500;
  const wxSize sizes[] = {wxSize(64, 48), wxSize(96, 54), wxSize(160, 90), wxSize(320, 240),
                          wxSize(640, 360)};
  std::vector<std::unique_ptr<CDecompressor>> decoders;
  for (const wxSize& size : sizes) {
    decoders.push_back(std::make_unique<CDecompressor>());
    PutCameraPicture(*decoders.back(), size);
  }
  const RenderMode modes[] = {RENDER_MODE_AUTO, RENDER_MODE_OPENGL, RENDER_MODE_SOFTWARE};
  std::vector<wxWindow*> tiles;
  std::vector<TestRenderer*> walls;
  for (int i = 0; i < kTiles; ++i) {
    tiles.push_back(MakeTile(wxPoint(i % 4 * 80, i / 4 * 60), wxSize(78, 58)));
    walls.push_back(MakeFacade(modes[i % 3], tiles.back()));
  }

  LogCapture log;
  std::mt19937 random(20261123);
  int delivered = 0;
  for (int frame = 0; frame < kFrames; ++frame) {
    for (int i = 0; i < kTiles; ++i) {
      TestRenderer* facade = walls[i];
      const unsigned choice = random() % 100;
      if (choice < 3) facade->ForceSoftwareMode(true);
      if (choice == 3) facade->ForceSoftwareMode(false);
      if (choice == 4) facade->SetRenderMode(modes[random() % 3]);
      CDecompressor& decoder = *decoders[random() % decoders.size()];
      delivered += HostFrame(*facade, decoder, tiles[i]).copied ? 1 : 0;
    }
    if (frame % 50 == 0) PumpEvents();  // replaced back-ends go at idle time
  }
  EXPECT_EQ(kTiles * kFrames, delivered) << "every negotiated frame reaches a back-end";
  for (const LogLine& line : log.Lines()) {
    EXPECT_EQ(std::string::npos, line.text.find("OpenGL Error")) << line.text;
  }
}

}  // namespace
