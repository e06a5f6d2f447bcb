// Textures, pixel buffers and the frame upload of the GL back-end: which formats it takes,
// the texture sizes and layouts it makes for them, the planes it lends (mapped pixel buffers
// or client memory), reuse and recreation, and every way the upload can fail.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <climits>
#include <cstring>

#include <wx/scrolwin.h>

#include <renderer/FragmentPrograms.h>

#include "GLFrameTest.h"

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;

using Textures = GLFrameTest;

class FlushWithoutArrays : public GLFrameTest, public ::testing::WithParamInterface<bool> {};

// Every pixel-format code from below the first to beyond the last.
std::vector<int> AllFormatCodes() {
  std::vector<int> codes;
  for (int code = -2; code <= 30; ++code) codes.push_back(code);
  return codes;
}

}  // namespace

// ---- Formats and sizes -------------------------------------------------------------------------

TEST_F(Textures, PixelFormatSupportFollowsTheCapabilities) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  for (const bool shaders : {false, true}) {
    for (const bool rectangles : {false, true}) {
      for (const bool bgr : {false, true}) {
        const ScopedValue<bool> shader(OpenGLRenderer::m_isShaderSupported, shaders);
        const ScopedValue<bool> rectangle(OpenGLRenderer::m_isTextRectSupported, rectangles);
        const ScopedValue<bool> bgra(OpenGLRenderer::m_isBgrSupported, bgr);
        for (const int code : AllFormatCodes()) {
          bool expected = false;
          switch (code) {
            case PIXEL_FORMAT_I420:
            case PIXEL_FORMAT_YUV422P:
            case PIXEL_FORMAT_NV12:
            case PIXEL_FORMAT_YV12: expected = shaders; break;
            case PIXEL_FORMAT_YUYV:
            case PIXEL_FORMAT_UYVY: expected = shaders && rectangles; break;
            case PIXEL_FORMAT_RGB24:
            case PIXEL_FORMAT_RGBA32: expected = true; break;
            case PIXEL_FORMAT_BGR24: expected = bgr; break;
          }
          EXPECT_EQ(expected, renderer->IsPixelFormatSupported(code))
              << "format " << code << ", shaders " << shaders << ", rectangles " << rectangles
              << ", BGR " << bgr;
        }
      }
    }
  }
}

TEST_F(Textures, ColourFormatOfPlaneZero) {
  GLTestRenderer* renderer = MakeRenderer();
  for (const int code : AllFormatCodes()) {
    unsigned int expected = 0;
    switch (code) {
      case PIXEL_FORMAT_I420:
      case PIXEL_FORMAT_YUV422P:
      case PIXEL_FORMAT_NV12:
      case PIXEL_FORMAT_YV12: expected = GL_LUMINANCE; break;
      case PIXEL_FORMAT_YUYV:
      case PIXEL_FORMAT_UYVY: expected = GL_LUMINANCE_ALPHA; break;
      case PIXEL_FORMAT_RGB24: expected = GL_RGB; break;
      case PIXEL_FORMAT_BGR24: expected = GL_BGR; break;
      case PIXEL_FORMAT_RGBA32: expected = GL_RGBA; break;
    }
    EXPECT_EQ(expected, renderer->GetColorFormat(code)) << "format " << code;
    EXPECT_EQ(code == PIXEL_FORMAT_YUYV || code == PIXEL_FORMAT_UYVY,
              renderer->IsRectangularFormat(code))
        << "format " << code;
  }
}

TEST_F(Textures, TextureSizeWithAndWithoutNonPowerOfTwoSupport) {
  GLTestRenderer* renderer = MakeRenderer();
  {
    const ScopedValue<bool> nonPow2(OpenGLRenderer::m_isNonPow2Supported, false);
    EXPECT_EQ(wxSize(1024, 512), renderer->DetermineTextureSize(640, 480));
    EXPECT_EQ(wxSize(8, 2), renderer->DetermineTextureSize(1, 1));
    EXPECT_EQ(wxSize(8, 4), renderer->DetermineTextureSize(7, 3));
    EXPECT_EQ(wxSize(16, 2), renderer->DetermineTextureSize(8, 2));
    EXPECT_EQ(wxSize(512, 256), renderer->DetermineTextureSize(320, 240));
  }
  const ScopedValue<bool> nonPow2(OpenGLRenderer::m_isNonPow2Supported, true);
  EXPECT_EQ(wxSize(648, 480), renderer->DetermineTextureSize(640, 480));
  EXPECT_EQ(wxSize(8, 1), renderer->DetermineTextureSize(1, 1));
  EXPECT_EQ(wxSize(208, 150), renderer->DetermineTextureSize(201, 150));
  EXPECT_EQ(wxSize(16, 3), renderer->DetermineTextureSize(8, 3));
}

// ---- Which videos and tiles GL takes -----------------------------------------------------------

TEST_F(Textures, VideoLargerThanTheLargestTextureIsRefused) {
  GLTestRenderer* renderer = MakeRenderer();
  const wxSize largest = OpenGLRenderer::m_maxTextureSize;
  ASSERT_GT(largest.x, 0);
  EXPECT_TRUE(renderer->IsModeSupported(largest.x, largest.y, PIXEL_FORMAT_I420));
  EXPECT_FALSE(renderer->IsModeSupported(largest.x + 1, 16, PIXEL_FORMAT_I420));
  EXPECT_FALSE(renderer->IsModeSupported(16, largest.y + 1, PIXEL_FORMAT_RGB24));
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  EXPECT_FALSE(renderer->GetFrameBuffer(largest.x + 1, 16, PIXEL_FORMAT_I420, planes, pitches));
}

// A frame that cannot be laid out is refused before anything is made: a side below 1 (which
// gave a 0-texel texture and planes in an empty buffer), a side beyond the texture limit, and
// sides whose byte counts an int does not hold.
TEST_F(Textures, FrameThatCannotBeLaidOutIsRefused) {
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  const int largest = OpenGLRenderer::m_maxTextureSize.x;
  const wxSize refused[] = {{-8, 100},    {100, -8},    {-1, -1},         {INT_MIN, 1},
                            {INT_MAX, 1}, {1, INT_MAX}, {largest + 1, 16}};
  for (const wxSize& size : refused) {
    unsigned char* planes[3] = {};
    int pitches[3] = {};
    EXPECT_FALSE(renderer->GetFrameBuffer(size.x, size.y, PIXEL_FORMAT_RGB24, planes, pitches))
        << size.x << " x " << size.y;
    EXPECT_EQ(nullptr, planes[0]);
    EXPECT_EQ(0, pitches[0]);
    HardwareImageInfo info = {};
    EXPECT_FALSE(renderer->BeginHardwareImage(size.x, size.y, PIXEL_FORMAT_RGB24, info));
  }
  EXPECT_TRUE(renderer->m_textures.empty());
  EXPECT_TRUE(renderer->m_frameBuffer.empty());
  EXPECT_FALSE(renderer->HasFrame());
}

// Whether the tile is inside its scrolled windows is asked of the X server (a round trip per
// frame) only when there is a scrolled window around it.
TEST_F(Textures, TileWithoutScrolledWindowsAsksTheServerNothing) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const unsigned long before = NextXRequest();
  EXPECT_TRUE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
  EXPECT_EQ(before, NextXRequest());
}

TEST_F(Textures, ModeSupportFallsBackToTheBaseRules) {
  GLTestRenderer* renderer = MakeRenderer();
  const ScopedValue<bool> bgr(OpenGLRenderer::m_isBgrSupported, false);
  EXPECT_FALSE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_BGR24));
  EXPECT_FALSE(renderer->IsModeSupported(64, 48, 5));
  EXPECT_TRUE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_RGB24));
}

namespace {

// A tile inside a scrolled window that can be scrolled by whole pixels.
class ScrolledTiles : public Textures {
 protected:
  void SetUp() override {
    Textures::SetUp();
    scrolled = new wxScrolledWindow(frame, wxID_ANY, wxPoint(10, 10), wxSize(150, 120));
    scrolled->SetVirtualSize(400, 400);
    scrolled->SetScrollRate(1, 1);
    inner = new wxWindow(scrolled, wxID_ANY, wxPoint(20, 20), wxSize(60, 40));
    PumpEvents();
  }

  wxScrolledWindow* scrolled = nullptr;
  wxWindow* inner = nullptr;
};

// A class of the host's own, derived from the scrolled window.
class HostScrolledWindow : public wxScrolledWindow {
 public:
  using wxScrolledWindow::wxScrolledWindow;
};

}  // namespace

TEST_F(ScrolledTiles, TileWhollyInsideItsScrolledWindowIsTaken) {
  GLTestRenderer* renderer = MakeRenderer(inner);
  EXPECT_TRUE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
}

TEST_F(ScrolledTiles, TileScrolledPartlyOutOfViewIsRefused) {
  GLTestRenderer* renderer = MakeRenderer(inner);
  scrolled->Scroll(0, 30);  // the tile's top 10 rows leave the view
  PumpEvents();
  EXPECT_FALSE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
  scrolled->Scroll(40, 0);  // its left 20 columns leave the view
  PumpEvents();
  EXPECT_FALSE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
  scrolled->Scroll(0, 0);
  PumpEvents();
  EXPECT_TRUE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
}

TEST_F(ScrolledTiles, TileReachingPastTheRightOrBottomEdgeIsRefused) {
  inner->SetSize(wxRect(120, 20, 60, 40));  // right edge past the view's 150 columns
  GLTestRenderer* renderer = MakeRenderer(inner);
  EXPECT_FALSE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
  inner->SetSize(wxRect(20, 100, 60, 40));  // bottom edge past the view's 120 rows
  PumpEvents();
  EXPECT_FALSE(renderer->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
}

// The walk starts at the tile itself, and a derived class counts as a scrolled window.
TEST_F(ScrolledTiles, ScrolledTileAndDerivedContainersAreChecked) {
  auto* host = new HostScrolledWindow(frame, wxID_ANY, wxPoint(170, 10), wxSize(100, 100));
  auto* outside = new wxWindow(host, wxID_ANY, wxPoint(60, 60), wxSize(60, 60));
  auto* scrolledTile = new wxScrolledWindow(frame, wxID_ANY, wxPoint(10, 140), wxSize(80, 60));
  PumpEvents();
  EXPECT_FALSE(MakeRenderer(outside)->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
  EXPECT_TRUE(MakeRenderer(scrolledTile)->IsModeSupported(64, 48, PIXEL_FORMAT_I420));
}

// ---- Texture layouts -------------------------------------------------------------------------

namespace {

// One plane's texture as the frame-buffer table lays it out, for a 320 x 240 video whose
// textures are 328 x 240 (non-power-of-two support on).
struct PlaneTexture {
  wxSize size;
  int internalFormat;
  unsigned int target;
  int bufferBytes;
  int pitch;
  size_t clientOffset;  // where the plane starts in client memory
};

struct LayoutCase {
  const char* name;
  int format;
  std::vector<PlaneTexture> planes;
  const char* const* program;
  size_t clientBytes;
};

void PrintTo(const LayoutCase& layout, std::ostream* out) { *out << layout.name; }

constexpr int kTw = 328;
constexpr int kTh = 240;
constexpr unsigned int k2D = GL_TEXTURE_2D;
constexpr unsigned int kRect = GL_TEXTURE_RECTANGLE_ARB;

const PlaneTexture kLumaPlane = {{kTw, kTh}, 1, k2D, kTw* kTh, kTw, 0};
const PlaneTexture kU420 = {{kTw / 2, kTh / 2}, 1, k2D, kTw* kTh / 4, kTw / 2, kHeight* kTw};
const PlaneTexture kV420 = {{kTw / 2, kTh / 2}, 1,       k2D,
                            kTw* kTh / 4,       kTw / 2, kHeight* kTw + kHeight* kTw / 4};

const LayoutCase kLayouts[] = {
    {"I420", PIXEL_FORMAT_I420, {kLumaPlane, kU420, kV420}, &PSO_YUV, kTw* kTh * 3 / 2},
    {"YV12", PIXEL_FORMAT_YV12, {kLumaPlane, kU420, kV420}, &PSO_YUV, kTw* kTh * 3 / 2},
    {"YUV422P",
     PIXEL_FORMAT_YUV422P,
     {kLumaPlane,
      {{kTw / 2, kTh}, 1, k2D, kTw* kTh / 2, kTw / 2, kHeight* kTw},
      {{kTw / 2, kTh}, 1, k2D, kTw* kTh / 2, kTw / 2, kHeight* kTw + kHeight* kTw / 2}},
     &PSO_YUV,
     2 * kTw* kTh},
    {"NV12",
     PIXEL_FORMAT_NV12,
     {kLumaPlane, {{kTw / 2, kTh / 2}, 2, k2D, kTw* kTh / 2, kTw, kHeight* kTw}},
     &PSO_NV12,
     2 * kTw* kTh},
    {"YUYV",
     PIXEL_FORMAT_YUYV,
     {{{kTw, kTh}, 2, kRect, 2 * kTw* kTh, 2 * kTw, 0}},
     &PSO_YUYV,
     2 * kTw* kTh},
    {"UYVY",
     PIXEL_FORMAT_UYVY,
     {{{kTw, kTh}, 2, kRect, 2 * kTw* kTh, 2 * kTw, 0}},
     &PSO_UYVY,
     2 * kTw* kTh},
    {"RGB24",
     PIXEL_FORMAT_RGB24,
     {{{kTw, kTh}, 3, k2D, 3 * kTw* kTh, 3 * kTw, 0}},
     nullptr,
     3 * kTw* kTh},
    {"BGR24",
     PIXEL_FORMAT_BGR24,
     {{{kTw, kTh}, 3, k2D, 3 * kTw* kTh, 3 * kTw, 0}},
     nullptr,
     3 * kTw* kTh},
    {"RGBA32",
     PIXEL_FORMAT_RGBA32,
     {{{kTw, kTh}, GL_RGBA, k2D, 4 * kTw* kTh, 4 * kTw, 0}},
     nullptr,
     4 * kTw* kTh},
};

class TextureLayouts : public Textures, public ::testing::WithParamInterface<LayoutCase> {
 protected:
  // Pitches of the lent planes: the table's, 0 for planes the format does not have.
  void ExpectPitches(const int* pitches) {
    const LayoutCase& layout = GetParam();
    for (size_t plane = 0; plane < 3; ++plane) {
      const int expected = plane < layout.planes.size() ? layout.planes[plane].pitch : 0;
      EXPECT_EQ(expected, pitches[plane]) << "pitch " << plane;
    }
  }
};

}  // namespace

TEST_P(TextureLayouts, PixelBufferPathMakesOneTextureAndBufferPerPlane) {
  const LayoutCase& layout = GetParam();
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, layout.format, planes, pitches));
  EXPECT_EQ(wxSize(kTw, kTh), renderer->m_textureSize);
  EXPECT_EQ(layout.format, renderer->m_texturePixelFormat);
  ASSERT_EQ(layout.planes.size(), renderer->m_textures.size());
  ASSERT_EQ(layout.planes.size(), renderer->m_pixelBuffers.size());
  ExpectPitches(pitches);
  for (size_t plane = 0; plane < layout.planes.size(); ++plane) {
    const PlaneTexture& expected = layout.planes[plane];
    const unsigned int texture = renderer->m_textures[plane];
    const unsigned int buffer = renderer->m_pixelBuffers[plane];
    EXPECT_EQ(expected.target, renderer->m_textureTargets[texture]) << "plane " << plane;
    EXPECT_EQ(expected.size, TextureSize(expected.target, texture)) << "plane " << plane;
    EXPECT_EQ(expected.internalFormat, TextureInternalFormat(expected.target, texture));
    EXPECT_EQ(expected.bufferBytes, BufferSize(buffer)) << "plane " << plane;
    EXPECT_TRUE(IsBufferMapped(buffer)) << "plane " << plane;
    EXPECT_EQ(buffer, renderer->GetPixelBufferId(plane));
  }
  unsigned char* mapped[3] = {};
  for (size_t plane = 0; plane < layout.planes.size(); ++plane) {
    mapped[plane] = static_cast<unsigned char*>(BufferMapping(renderer->m_pixelBuffers[plane]));
  }
  if (layout.format == PIXEL_FORMAT_YV12) std::swap(mapped[1], mapped[2]);
  for (size_t plane = 0; plane < 3; ++plane) EXPECT_EQ(mapped[plane], planes[plane]);
  if (layout.program) {
    ASSERT_EQ(1u, renderer->m_programs.size());
    EXPECT_EQ(std::string(*layout.program), ProgramText(renderer->m_programs[0]));
  } else {
    EXPECT_TRUE(renderer->m_programs.empty());
  }
  EXPECT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
  for (const unsigned int buffer : renderer->m_pixelBuffers) EXPECT_FALSE(IsBufferMapped(buffer));
  EXPECT_TRUE(NoGLError());
}

// Without pixel buffers the planes lie in the client-memory frame buffer, at the offsets of a
// frame of the requested height (not the texture's).
TEST_P(TextureLayouts, ClientMemoryPathLendsTheFrameBuffer) {
  const LayoutCase& layout = GetParam();
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, layout.format, planes, pitches));
  ASSERT_EQ(layout.planes.size(), renderer->m_textures.size());
  EXPECT_TRUE(renderer->m_pixelBuffers.empty());
  EXPECT_EQ(0u, renderer->GetPixelBufferId(0));
  ExpectPitches(pitches);
  EXPECT_EQ(layout.clientBytes, renderer->m_frameBuffer.size());
  for (size_t plane = 0; plane < 3; ++plane) {
    unsigned char* expected = plane < layout.planes.size() ? renderer->m_frameBuffer.data() +
                                                                 layout.planes[plane].clientOffset
                                                           : nullptr;
    EXPECT_EQ(expected, planes[plane]) << "plane " << plane;
  }
  EXPECT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
  EXPECT_TRUE(renderer->HasFrame());
  EXPECT_TRUE(NoGLError());
}

INSTANTIATE_TEST_SUITE_P(EveryFormat, TextureLayouts, ::testing::ValuesIn(kLayouts),
                         [](const ::testing::TestParamInfo<LayoutCase>& info) {
                           return std::string(info.param.name);
                         });

// The sizes of the worked example without non-power-of-two support, and the client planes of
// a frame shorter than its texture.
TEST_F(Textures, PowerOfTwoTexturesOfA320x240Frame) {
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  const ScopedValue<bool> nonPow2(OpenGLRenderer::m_isNonPow2Supported, false);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_I420, planes, pitches));
  ASSERT_EQ(3u, renderer->m_textures.size());
  EXPECT_EQ(wxSize(512, 256), TextureSize(GL_TEXTURE_2D, renderer->m_textures[0]));
  EXPECT_EQ(wxSize(256, 128), TextureSize(GL_TEXTURE_2D, renderer->m_textures[1]));
  EXPECT_EQ(wxSize(256, 128), TextureSize(GL_TEXTURE_2D, renderer->m_textures[2]));
  EXPECT_EQ((std::vector<int>{512, 256, 256}), std::vector<int>(pitches, pitches + 3));
  EXPECT_EQ(512u * 256 * 3 / 2, renderer->m_frameBuffer.size());
  EXPECT_EQ(planes[0] + 240 * 512, planes[1]);
  EXPECT_EQ(planes[1] + 240 * 256 / 2, planes[2]);
  EXPECT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
}

// The third plane of a 4:2:0 frame starts (height x pitch) / 2 after the second, the division
// taken after the product: with an odd height that is half a row more than the rows it holds.
TEST_F(Textures, ClientPlanesOfAnOddHeightFrame) {
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(64, 45, PIXEL_FORMAT_I420, planes, pitches));
  EXPECT_EQ((std::vector<int>{72, 36, 36}), std::vector<int>(pitches, pitches + 3));
  EXPECT_EQ(planes[0] + 45 * 72, planes[1]);
  EXPECT_EQ(planes[1] + (45 * 36) / 2, planes[2]);
  // The last chroma row the upload reads (texture height 45 / 2 = 22 rows) is inside the buffer.
  EXPECT_LE(planes[2] + 22 * 36, renderer->m_frameBuffer.data() + renderer->m_frameBuffer.size());
  EXPECT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
  EXPECT_TRUE(NoGLError());
}

// NV12 has no third plane: its pitch and pointer stay as the base cleared them.
TEST_F(Textures, UnusedEntriesStayZero) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  unsigned char* planes[3] = {nullptr, nullptr, reinterpret_cast<unsigned char*>(&planes)};
  int pitches[3] = {7, 7, 7};
  ASSERT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_NV12, planes, pitches));
  EXPECT_EQ(nullptr, planes[2]);
  EXPECT_EQ(0, pitches[2]);
  EXPECT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
}

// The single-plane form succeeds only for formats with one plane.
TEST_F(Textures, SinglePlaneFormOnlyForOnePlaneFormats) {
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  unsigned char buffer = 0;
  EXPECT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_RGB24, &buffer, 0));
  EXPECT_FALSE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_I420, &buffer, 0));
}

TEST_F(Textures, ZeroSizedFrameIsRefused) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  EXPECT_FALSE(renderer->GetFrameBuffer(0, kHeight, PIXEL_FORMAT_I420, planes, pitches));
  EXPECT_TRUE(renderer->m_textures.empty());
}

// ---- Reuse and recreation --------------------------------------------------------------------

namespace {

// Labels every texture of the renderer's set.
void LabelTextures(GLTestRenderer* renderer) {
  for (const unsigned int texture : renderer->m_textures) LabelTexture(texture, "frame");
}

bool AllLabelled(GLTestRenderer* renderer) {
  for (const unsigned int texture : renderer->m_textures) {
    if (TextureLabel(texture) != "frame") return false;
  }
  return !renderer->m_textures.empty();
}

bool NoneLabelled(GLTestRenderer* renderer) {
  for (const unsigned int texture : renderer->m_textures) {
    if (!TextureLabel(texture).empty()) return false;
  }
  return true;
}

}  // namespace

TEST_F(Textures, SameSizeAndFormatReuseTheTextures) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  const FramePicture picture = FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight));
  ASSERT_TRUE(Feed(renderer, picture));
  const std::vector<unsigned int> textures = renderer->m_textures;
  const std::vector<unsigned int> buffers = renderer->m_pixelBuffers;
  const std::vector<unsigned int> programs = renderer->m_programs;
  LabelTextures(renderer);
  ASSERT_TRUE(Feed(renderer, picture));
  EXPECT_EQ(textures, renderer->m_textures);
  EXPECT_EQ(buffers, renderer->m_pixelBuffers);
  EXPECT_EQ(programs, renderer->m_programs);
  EXPECT_TRUE(AllLabelled(renderer));
}

TEST_F(Textures, ChangedFormatRecreatesTheTextures) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight))));
  const unsigned int oldProgram = renderer->m_programs.at(0);
  LabelTextures(renderer);
  // YV12 has the very same layout and program, and is still made afresh.
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_YV12, wxSize(kWidth, kHeight))));
  EXPECT_EQ(3u, renderer->m_textures.size());
  EXPECT_TRUE(NoneLabelled(renderer));
  EXPECT_EQ(PIXEL_FORMAT_YV12, renderer->m_texturePixelFormat);
  LabelTextures(renderer);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_NV12, wxSize(kWidth, kHeight))));
  EXPECT_EQ(2u, renderer->m_textures.size());
  EXPECT_EQ(2u, renderer->m_pixelBuffers.size());
  EXPECT_TRUE(NoneLabelled(renderer));
  ASSERT_EQ(1u, renderer->m_programs.size());
  EXPECT_EQ(std::string(PSO_NV12), ProgramText(renderer->m_programs[0]));
  EXPECT_TRUE(oldProgram == renderer->m_programs[0] || !IsProgramName(oldProgram));
}

TEST_F(Textures, ChangedSizeRecreatesTheTextures) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_RGB24, wxSize(kWidth, kHeight))));
  LabelTextures(renderer);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_RGB24, wxSize(kWidth, 200))));
  EXPECT_TRUE(NoneLabelled(renderer));
  EXPECT_EQ(wxSize(kTw, 200), TextureSize(GL_TEXTURE_2D, renderer->m_textures.at(0)));
  // A width within the same padding step gives the same texture size: kept.
  LabelTextures(renderer);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_RGB24, wxSize(kWidth + 2, 200))));
  EXPECT_TRUE(AllLabelled(renderer));
}

// The textures' format is the renderer's own record: painting (which copies the frame format
// into the rendered format) does not make a stale set look current.
TEST_F(Textures, PaintingDoesNotChangeTheTexturesFormat) {
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight))));
  PaintFrame(renderer);
  EXPECT_EQ(PIXEL_FORMAT_I420, renderer->m_texturePixelFormat);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_YUYV, wxSize(kWidth, kHeight))));
  EXPECT_EQ(PIXEL_FORMAT_YUYV, renderer->m_texturePixelFormat);
  EXPECT_EQ(1u, renderer->m_textures.size());
}

// ---- YV12's plane exchange ---------------------------------------------------------------------

// The other back-ends take a flush without arrays; so does this one, after either kind of
// lending, and the frame written into the lent planes is the one shown.
TEST_P(FlushWithoutArrays, YV12FrameIsUploadedFromThePlanesItLent) {
  GLTestRenderer* renderer = MakeCurrentRenderer(GetParam());
  const FramePicture picture = FramePicture::Bars(PIXEL_FORMAT_YV12, tile->GetClientSize());
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  const wxSize size = tile->GetClientSize();
  ASSERT_TRUE(renderer->GetFrameBuffer(size.x, size.y, PIXEL_FORMAT_YV12, planes, pitches));
  picture.Write(planes, pitches);
  ASSERT_TRUE(renderer->FlushFrameBuffer(nullptr, nullptr));
  EXPECT_TRUE(renderer->HasFrame());
  wxImage expected;
  ASSERT_TRUE(Expected(renderer, picture, &expected));
  EXPECT_TRUE(ImagesNear(PaintFrame(renderer), expected, kYuvConversionTolerance, TestName()));
}

INSTANTIATE_TEST_SUITE_P(BothPaths, FlushWithoutArrays, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) {
                           return std::string(info.param ? "PixelBuffers" : "Client");
                         });

TEST_F(Textures, YV12PlanesAreExchangedAfterMappingAndBackAtFlush) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_YV12, planes, pitches));
  void* uBuffer = BufferMapping(renderer->GetPixelBufferId(1));
  void* vBuffer = BufferMapping(renderer->GetPixelBufferId(2));
  ASSERT_NE(nullptr, uBuffer);
  EXPECT_EQ(vBuffer, planes[1]) << "the decoder's second plane (V) goes to texture 2";
  EXPECT_EQ(uBuffer, planes[2]) << "the decoder's third plane (U) goes to texture 1";
  ASSERT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
  EXPECT_EQ(uBuffer, planes[1]);
  EXPECT_EQ(vBuffer, planes[2]);
}

// In client memory the planes keep the decoder's order (V second) and are exchanged at flush,
// so that texture 1 still receives U.
TEST_F(Textures, YV12ClientPlanesAreExchangedOnlyAtFlush) {
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_YV12, planes, pitches));
  unsigned char* second = planes[1];
  unsigned char* third = planes[2];
  EXPECT_LT(second, third);
  ASSERT_TRUE(renderer->FlushFrameBuffer(planes, pitches));
  EXPECT_EQ(third, planes[1]);
  EXPECT_EQ(second, planes[2]);
}

// ---- Pixel buffers -----------------------------------------------------------------------------

TEST_F(Textures, PixelBufferIdsAreBoundsChecked) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_NV12, planes, pitches));
  ASSERT_EQ(2u, renderer->m_pixelBuffers.size());
  EXPECT_EQ(renderer->m_pixelBuffers[1], renderer->GetPixelBufferId(1));
  EXPECT_EQ(0u, renderer->GetPixelBufferId(2)) << "an index equal to the count";
  EXPECT_EQ(0u, renderer->GetPixelBufferId(1000));
  renderer->CancelFrameBuffer(planes, pitches);
}

TEST_F(Textures, CancelUnmapsEveryBufferAndKeepsTheFrame) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight))));
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_I420, planes, pitches));
  renderer->CancelFrameBuffer(planes, pitches);
  for (const unsigned int buffer : renderer->m_pixelBuffers) EXPECT_FALSE(IsBufferMapped(buffer));
  EXPECT_EQ((std::vector<unsigned char*>(3, nullptr)),
            std::vector<unsigned char*>(planes, planes + 3));
  EXPECT_EQ((std::vector<int>(3, 0)), std::vector<int>(pitches, pitches + 3));
  EXPECT_TRUE(renderer->HasFrame());
  EXPECT_EQ(3u, renderer->m_textures.size());
  EXPECT_TRUE(NoGLError());
}

// Buffer 1 is already mapped (as by someone else), so its mapping fails: what was mapped is
// unmapped, the lent planes are withdrawn, no GL error stays behind, and the next frame works.
TEST_F(Textures, FailedMappingUnmapsWhatWasMapped) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight))));
  const unsigned int busy = renderer->GetPixelBufferId(1);
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, busy);
  ASSERT_NE(nullptr, glMapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY));
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);

  unsigned char* planes[3] = {};
  int pitches[3] = {};
  EXPECT_FALSE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_I420, planes, pitches));
  for (const unsigned int buffer : renderer->m_pixelBuffers) EXPECT_FALSE(IsBufferMapped(buffer));
  EXPECT_EQ((std::vector<unsigned char*>(3, nullptr)),
            std::vector<unsigned char*>(planes, planes + 3));
  EXPECT_EQ((std::vector<int>(3, 0)), std::vector<int>(pitches, pitches + 3));
  EXPECT_TRUE(NoGLError());
  EXPECT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight))));
}

TEST_F(Textures, UpdateTextureUploadsWithAndWithoutABuffer) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  ASSERT_TRUE(renderer->CreateTexture(8, 2, GL_RGBA, GL_RGBA, 8 * 2 * 4, false));
  ASSERT_EQ(1u, renderer->m_pixelBuffers.size());
  const unsigned int texture = renderer->m_textures[0];
  std::vector<unsigned char> pixels(8 * 2 * 4);
  for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 3);
  auto textureBytes = [texture] {
    std::vector<unsigned char> bytes(8 * 2 * 4);
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return bytes;
  };
  renderer->UpdateTexture(texture, renderer->m_pixelBuffers[0], 8, 2, GL_RGBA, pixels.data(),
                          static_cast<int>(pixels.size()));
  EXPECT_EQ(pixels, textureBytes());
  EXPECT_FALSE(IsBufferMapped(renderer->m_pixelBuffers[0]));
  for (unsigned char& byte : pixels) byte = static_cast<unsigned char>(255 - byte);
  renderer->UpdateTexture(texture, 0, 8, 2, GL_RGBA, pixels.data(),
                          static_cast<int>(pixels.size()));
  EXPECT_EQ(pixels, textureBytes());
  EXPECT_TRUE(NoGLError());
}

// ---- Failures --------------------------------------------------------------------------------

namespace {

// The GL names of a renderer's frame objects at one moment.
struct FrameObjects {
  std::vector<unsigned int> textures;
  std::vector<unsigned int> buffers;
  std::vector<unsigned int> programs;
};

FrameObjects ObjectsOf(GLTestRenderer* renderer) {
  return {renderer->m_textures, renderer->m_pixelBuffers, renderer->m_programs};
}

// Every list of the renderer is empty and none of `before`'s names is still an object.
::testing::AssertionResult AllDeleted(GLTestRenderer* renderer, const FrameObjects& before) {
  if (!renderer->m_textures.empty() || !renderer->m_pixelBuffers.empty() ||
      !renderer->m_programs.empty()) {
    return ::testing::AssertionFailure() << "the renderer still lists frame objects";
  }
  for (const unsigned int texture : before.textures) {
    if (glIsTexture(texture)) return ::testing::AssertionFailure() << "texture " << texture;
  }
  for (const unsigned int buffer : before.buffers) {
    if (glIsBuffer(buffer)) return ::testing::AssertionFailure() << "buffer " << buffer;
  }
  for (const unsigned int program : before.programs) {
    if (IsProgramName(program)) return ::testing::AssertionFailure() << "program " << program;
  }
  return ::testing::AssertionSuccess();
}

}  // namespace

// A frame as wide as the largest texture passes the size check, but its padded texture does
// not: the proxy refuses it (silently, with no GL error to report) and nothing is left.
TEST_F(Textures, TextureTheProxyRefusesFailsTheFrameBuffer) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight))));
  const FrameObjects before = ObjectsOf(renderer);
  const LogCapture log;
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  const int widest = OpenGLRenderer::m_maxTextureSize.x;
  EXPECT_FALSE(renderer->GetFrameBuffer(widest, 16, PIXEL_FORMAT_I420, planes, pitches));
  EXPECT_TRUE(AllDeleted(renderer, before));
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_TRUE(NoGLError());
}

// A refusal is logged when GL reports an error with it; an invalid internal format is refused
// by the proxy with one.
TEST_F(Textures, ProxyRefusalWithAnErrorIsLogged) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  const LogCapture log;
  EXPECT_FALSE(renderer->CreateTexture(64, 64, 12345, GL_RGBA, 64 * 64 * 4, false));
  EXPECT_TRUE(LoggedAlone(
      log, "OpenGL Error - Failed to create texture. Texture size too big.: invalid value (1281)",
      "CreateTexture"));
  EXPECT_TRUE(renderer->m_textures.empty());
  EXPECT_TRUE(renderer->m_pixelBuffers.empty());
}

// An error some earlier call left pending (here the host's: an invalid enable) is not the
// texture creation's: the frame is laid out as usual, and nothing is logged.
TEST_F(Textures, ErrorLeftByEarlierCallsDoesNotFailTheTextures) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  const LogCapture log;
  glEnable(0);  // GL_INVALID_ENUM, pending
  EXPECT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight))));
  EXPECT_EQ(3u, renderer->m_textures.size());
  EXPECT_EQ(3u, renderer->m_pixelBuffers.size());
  EXPECT_EQ(1u, renderer->m_programs.size());
  EXPECT_TRUE(log.Lines().empty());
}

// A buffer whose name cannot be generated fails its texture and the whole set: buffers are
// paired with planes by index, so a set with one missing would lend the wrong planes.
TEST_F(Textures, PixelBufferWithoutANameFailsTheWholeTextureSet) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_NV12, wxSize(kWidth, kHeight))));
  const FrameObjects before = ObjectsOf(renderer);
  renderer->buffersBeforeAFailure = 1;  // the second plane's buffer gets no name
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  EXPECT_FALSE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_I420, planes, pitches));
  EXPECT_TRUE(AllDeleted(renderer, before));
  EXPECT_TRUE(renderer->m_textureTargets.empty());
  EXPECT_EQ(nullptr, planes[0]);
  renderer->buffersBeforeAFailure = -1;
  EXPECT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_I420, wxSize(kWidth, kHeight))));
}

TEST_F(Textures, TextureWithoutPixelBufferSupportHasNoBuffer) {
  GLTestRenderer* renderer = MakeCurrentRenderer(false);
  EXPECT_TRUE(renderer->CreateTexture(64, 32, 3, GL_RGB, 64 * 32 * 3, false));
  EXPECT_EQ(1u, renderer->m_textures.size());
  EXPECT_TRUE(renderer->m_pixelBuffers.empty());
  EXPECT_TRUE(renderer->CreateTexture(64, 32, 2, GL_LUMINANCE_ALPHA, 64 * 32 * 2, true));
  EXPECT_EQ(static_cast<unsigned int>(GL_TEXTURE_RECTANGLE_ARB),
            renderer->m_textureTargets[renderer->m_textures.back()]);
}

// A program that does not compile (here the planar one, swapped for a broken text) fails the
// frame buffer with the renderer's textures, buffers and programs all deleted.
TEST_F(Textures, ProgramThatDoesNotCompileFailsTheFrameBuffer) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  ASSERT_TRUE(Feed(renderer, FramePicture::Bars(PIXEL_FORMAT_NV12, wxSize(kWidth, kHeight))));
  const FrameObjects before = ObjectsOf(renderer);
  const ScopedValue<const char*> broken(PSO_YUV, "!!ARBfp1.0\nNOT AN INSTRUCTION;\nEND\n");
  const LogCapture log;
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  EXPECT_FALSE(renderer->GetFrameBuffer(kWidth, kHeight, PIXEL_FORMAT_I420, planes, pitches));
  EXPECT_TRUE(AllDeleted(renderer, before));
  EXPECT_TRUE(LoggedAlone(log, "OpenGL Error - Failed to create shader: invalid operation (1282)",
                          "LoadShader"));
  EXPECT_TRUE(NoGLError());
}

// ---- Hardware images -------------------------------------------------------------------------

TEST_F(Textures, HardwareImageFailsAfterCreatingTheTextures) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  EXPECT_TRUE(renderer->IsHardwareDecompSupported());
  HardwareImageInfo info = {};
  EXPECT_FALSE(renderer->BeginHardwareImage(kWidth, kHeight, PIXEL_FORMAT_NV12, info));
  EXPECT_EQ(2u, renderer->m_textures.size());
  EXPECT_EQ(PIXEL_FORMAT_NV12, renderer->GetPixelFormat());
  EXPECT_EQ(0u, info.texture);
  for (const unsigned int buffer : renderer->m_pixelBuffers) EXPECT_FALSE(IsBufferMapped(buffer));
  EXPECT_FALSE(renderer->HasFrame());
}

TEST_F(Textures, HardwareImageWithASurfaceNamesTheFirstTexture) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  int surface = 0;
  renderer->m_hardwareSurface = &surface;
  HardwareImageInfo info = {};
  ASSERT_TRUE(renderer->BeginHardwareImage(kWidth, kHeight, PIXEL_FORMAT_YUYV, info));
  EXPECT_EQ(renderer->m_textures.at(0), info.texture);
  EXPECT_EQ(static_cast<unsigned int>(GL_TEXTURE_RECTANGLE_ARB), info.surface);
  EXPECT_EQ(kWidth, info.width);
  EXPECT_EQ(kHeight, info.height);
  EXPECT_FALSE(renderer->HasFrame());
  renderer->EndHardwareImage(info);
  EXPECT_TRUE(renderer->HasFrame());
}

TEST_F(Textures, HardwareImageOfAnUnsupportedModeFails) {
  GLTestRenderer* renderer = MakeCurrentRenderer(true);
  HardwareImageInfo info = {};
  EXPECT_FALSE(renderer->BeginHardwareImage(kWidth, kHeight, 5, info));
  EXPECT_TRUE(renderer->m_textures.empty());
}

// ---- Many frames -------------------------------------------------------------------------------

// Formats, sizes and both upload paths in turn: every frame leaves exactly its own texture set
// behind, no GL error, and (under the sanitizer build) no leak.
TEST_F(Textures, ManyFramesWithFormatAndSizeChanges) {
  GLTestRenderer* renderer = MakeRenderer();
  const int formats[] = {PIXEL_FORMAT_I420,   PIXEL_FORMAT_YUYV,    PIXEL_FORMAT_RGB24,
                         PIXEL_FORMAT_NV12,   PIXEL_FORMAT_UYVY,    PIXEL_FORMAT_YV12,
                         PIXEL_FORMAT_RGBA32, PIXEL_FORMAT_YUV422P, PIXEL_FORMAT_BGR24};
  const wxSize sizes[] = {wxSize(64, 48), wxSize(200, 150), wxSize(98, 34)};
  std::vector<unsigned int> seen;
  for (int frame = 0; frame < 60; ++frame) {
    const ScopedValue<bool> buffers(OpenGLRenderer::m_isPixelBufferSupported, frame % 4 < 2);
    const int format = formats[frame % 9];
    const FramePicture picture = FramePicture::Bars(format, sizes[(frame / 3) % 3]);
    ASSERT_TRUE(Feed(renderer, picture)) << "frame " << frame;
    PaintFrame(renderer);
    IRendererImage* image = renderer->CreateImage(SolidImage(wxSize(10, 6), *wxGREEN));
    renderer->DeleteImage(image);
    EXPECT_LE(renderer->m_textures.size(), 3u);
    EXPECT_LE(renderer->m_programs.size(), 1u);
    renderer->SetCurrent();
    ASSERT_TRUE(NoGLError()) << "frame " << frame;
  }
  renderer->ClearFrame();
  GLint textures = 0;
  for (unsigned int name = 1; name < 200; ++name) textures += glIsTexture(name) ? 1 : 0;
  EXPECT_EQ(0, textures) << "no frame or image texture outlives its use";
}
