// The capability probe: its rules on injected driver answers, and its report of the real Mesa
// context end to end through the renderer-description registry.
#include <cstring>
#include <string>

#include <GL/gl.h>
#include <wx/tokenzr.h>

#include <renderer/GLEntryPoints.h>

#include "GLTest.h"

namespace {

void SomeFunction() {}

GLEntryPoints::Proc FindsEverything(const char*) { return &SomeFunction; }

// The one function the window system does not have, for FindsAllButOne.
const char* missingFunction = "";

GLEntryPoints::Proc FindsAllButOne(const char* name) {
  return std::strcmp(name, missingFunction) == 0 ? nullptr : &SomeFunction;
}

// A driver the test describes: its extension list, the largest square texture it takes and
// its strings. It records the names and sides it was asked about.
struct FakeDriver {
  std::string extensions;
  int largestSide = 8192;
  wxString vendor = "Vendor";
  wxString renderer = "Renderer";
  wxString version = "1.5";
  GLEntryPoints entryPoints{FindsEverything};
  std::vector<std::string> askedNames;
  std::vector<int> askedSides;

  GLTestRenderer::DriverQueries Queries() {
    GLTestRenderer::DriverQueries queries;
    queries.hasExtension = [this](const char* name) {
      askedNames.push_back(name);
      return IsExtensionSupported(extensions.c_str(), name);
    };
    queries.acceptsSquareTexture = [this](int side) {
      askedSides.push_back(side);
      return side <= largestSide;
    };
    queries.string = [this](unsigned int name) {
      return name == GL_VENDOR ? vendor : name == GL_RENDERER ? renderer : version;
    };
    queries.entryPoints = &entryPoints;
    return queries;
  }
};

const char* const kAllExtensions =
    "GL_EXT_bgra GL_EXT_pixel_buffer_object GL_ARB_texture_non_power_of_two "
    "GL_ARB_fragment_program GL_EXT_texture_rectangle";
const char* const kNotRecommendedLine =
    "OpenGL Information - OpenGL is not recommended on this system.";

std::vector<std::string> Lines(const wxString& text) {
  std::vector<std::string> lines;
  wxStringTokenizer tokens(text, "\n", wxTOKEN_RET_EMPTY_ALL);
  while (tokens.HasMoreTokens()) lines.push_back(tokens.GetNextToken().utf8_string());
  return lines;
}

class Probe : public GLTest {
 protected:
  // A live renderer for the probe to make current; its own real probe has run already and
  // the registry is emptied for the injected one.
  GLTestRenderer* Renderer() {
    GLTestRenderer* renderer = MakeRenderer();
    RendererBase::ClearRendererDesc(RENDER_MODE_OPENGL);
    return renderer;
  }
};

}  // namespace

TEST(ProbeRules, ExtensionsAreAskedInOrderWithTheSecondNameOnlyWhenTheFirstIsMissing) {
  FakeDriver driver;
  driver.extensions = kAllExtensions;
  GLTestRenderer::DetectExtensions(driver.Queries());
  EXPECT_EQ((std::vector<std::string>{"GL_EXT_bgra", "GL_EXT_pixel_buffer_object",
                                      "GL_ARB_texture_non_power_of_two", "GL_ARB_fragment_program",
                                      "GL_EXT_texture_rectangle"}),
            driver.askedNames);
  EXPECT_TRUE(OpenGLRenderer::m_isBgrSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isPixelBufferSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isNonPow2Supported);
  EXPECT_TRUE(OpenGLRenderer::m_isShaderSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isTextRectSupported);
}

TEST(ProbeRules, SecondNamesOfAPairAreEnough) {
  FakeDriver driver;
  driver.extensions = "GL_ARB_pixel_buffer_object GL_NV_texture_rectangle";
  GLTestRenderer::DetectExtensions(driver.Queries());
  EXPECT_EQ((std::vector<std::string>{"GL_EXT_bgra", "GL_EXT_pixel_buffer_object",
                                      "GL_ARB_pixel_buffer_object",
                                      "GL_ARB_texture_non_power_of_two", "GL_ARB_fragment_program",
                                      "GL_EXT_texture_rectangle", "GL_NV_texture_rectangle"}),
            driver.askedNames);
  EXPECT_FALSE(OpenGLRenderer::m_isBgrSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isPixelBufferSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isNonPow2Supported);
  EXPECT_FALSE(OpenGLRenderer::m_isShaderSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isTextRectSupported);
}

TEST(ProbeRules, FlagsAreClearedAgainWhenTheExtensionsAreMissing) {
  FakeDriver driver;
  driver.extensions = kAllExtensions;
  GLTestRenderer::DetectExtensions(driver.Queries());
  driver.extensions = "GL_EXT_bgra_x GL_ARB_fragment_program_shadow";
  GLTestRenderer::DetectExtensions(driver.Queries());
  EXPECT_FALSE(OpenGLRenderer::m_isBgrSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isPixelBufferSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isNonPow2Supported);
  EXPECT_FALSE(OpenGLRenderer::m_isShaderSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isTextRectSupported);
}

TEST(ProbeRules, MissingBufferFunctionCountsAsMissingPixelBuffers) {
  FakeDriver driver;
  driver.extensions = kAllExtensions;
  missingFunction = "glMapBuffer";
  driver.entryPoints = GLEntryPoints(FindsAllButOne);
  GLTestRenderer::DetectExtensions(driver.Queries());
  EXPECT_FALSE(OpenGLRenderer::m_isPixelBufferSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isShaderSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isBgrSupported);
}

TEST(ProbeRules, MissingProgramOrMultitextureFunctionCountsAsMissingShaders) {
  for (const char* missing : {"glProgramStringARB", "glMultiTexCoord2f"}) {
    missingFunction = missing;
    FakeDriver driver;
    driver.extensions = kAllExtensions;
    driver.entryPoints = GLEntryPoints(FindsAllButOne);
    GLTestRenderer::DetectExtensions(driver.Queries());
    EXPECT_FALSE(OpenGLRenderer::m_isShaderSupported) << missing;
    EXPECT_TRUE(OpenGLRenderer::m_isPixelBufferSupported) << missing;
  }
}

TEST(ProbeRules, SizeLoopDoublesUntilTheFirstRefusal) {
  FakeDriver driver;
  EXPECT_EQ(wxSize(8192, 8192), GLTestRenderer::FindMaxTextureSize(
                                    driver.Queries().acceptsSquareTexture, wxSize(0, 0)));
  EXPECT_EQ((std::vector<int>{256, 512, 1024, 2048, 4096, 8192, 16384}), driver.askedSides);
}

TEST(ProbeRules, RefusedFirstSizeKeepsThePreviousValue) {
  FakeDriver driver;
  driver.largestSide = 128;
  const auto accepts = driver.Queries().acceptsSquareTexture;
  EXPECT_EQ(wxSize(0, 0), GLTestRenderer::FindMaxTextureSize(accepts, wxSize(0, 0)));
  EXPECT_EQ(wxSize(512, 512), GLTestRenderer::FindMaxTextureSize(accepts, wxSize(512, 512)));
  EXPECT_EQ((std::vector<int>{256, 256}), driver.askedSides);
}

TEST(ProbeRules, SizeLoopStopsBeforeTheSideOverflows) {
  EXPECT_EQ(wxSize(1 << 30, 1 << 30),
            GLTestRenderer::FindMaxTextureSize([](int) { return true; }, wxSize(0, 0)));
}

TEST(ProbeRules, RendererStringsWithoutTheThreeMarkersAreRecommended) {
  EXPECT_TRUE(GLTestRenderer::IsRecommendedRenderer("llvmpipe (LLVM 15.0.6, 256 bits)"));
  EXPECT_TRUE(GLTestRenderer::IsRecommendedRenderer("softpipe"));
  EXPECT_TRUE(GLTestRenderer::IsRecommendedRenderer("Mesa DRI Intel(R) HD Graphics 620"));
  EXPECT_TRUE(GLTestRenderer::IsRecommendedRenderer(""));
}

TEST(ProbeRules, AnyOfTheThreeMarkersAnywhereIsNotRecommended) {
  EXPECT_FALSE(GLTestRenderer::IsRecommendedRenderer("Mesa X11 Software Rasterizer"));
  EXPECT_FALSE(GLTestRenderer::IsRecommendedRenderer("Software Rasterizer"));
  EXPECT_FALSE(GLTestRenderer::IsRecommendedRenderer("Mesa GLX Indirect"));
  EXPECT_FALSE(GLTestRenderer::IsRecommendedRenderer("GDI Generic"));
  EXPECT_FALSE(GLTestRenderer::IsRecommendedRenderer("Vendor GDI Generic 1.1"));
}

// A driver string that is not UTF-8 (a vendor name in Latin-1) keeps every byte, as Latin-1,
// instead of becoming an empty line; so a renderer name with a marker in it is still judged.
TEST(ProbeRules, DriverStringsThatAreNotUtf8AreReadAsLatin1) {
  EXPECT_EQ(wxString(L"Soci\u00e9t\u00e9 G\u00e9n\u00e9rale"),
            GLTestRenderer::DriverString("Soci\xe9t\xe9 G\xe9n\xe9rale"));
  EXPECT_EQ(wxString(L"Caf\u00e9 GL"), GLTestRenderer::DriverString("Caf\xc3\xa9 GL"));
  EXPECT_EQ(wxString(), GLTestRenderer::DriverString(""));
  EXPECT_EQ(wxString(), GLTestRenderer::DriverString(nullptr));
  EXPECT_FALSE(GLTestRenderer::IsRecommendedRenderer(
      GLTestRenderer::DriverString("Mesa GLX Indirect (r\xe9seau)")));
}

TEST(ProbeRules, MarkersAreCaseSensitive) {
  EXPECT_TRUE(GLTestRenderer::IsRecommendedRenderer("Mesa GLX indirect"));
  EXPECT_TRUE(GLTestRenderer::IsRecommendedRenderer("software rasterizer"));
  EXPECT_TRUE(GLTestRenderer::IsRecommendedRenderer("gdi generic"));
}

TEST_F(Probe, InjectedDriverGivesTheTenLinesInOrder) {
  GLTestRenderer* renderer = Renderer();
  FakeDriver driver;
  driver.extensions = "GL_EXT_bgra GL_ARB_pixel_buffer_object";
  driver.vendor = "Acme";
  driver.renderer = "Acme Rasteriser";
  driver.version = "1.4 Acme";
  OpenGLRenderer::m_maxTextureSize = wxSize(0, 0);
  EXPECT_EQ(0, GLTestRenderer::Probe(renderer, driver.Queries()));
  EXPECT_EQ((std::vector<std::string>{
                "OpenGL Capabilities - Vendor: Acme",
                "OpenGL Capabilities - Renderer: Acme Rasteriser",
                "OpenGL Capabilities - Version: 1.4 Acme",
                "OpenGL Capabilities - BGR Supported: Yes",
                "OpenGL Capabilities - Pixel Buffer Supported: Yes",
                "OpenGL Capabilities - Non Power of 2 Supported: No",
                "OpenGL Capabilities - Rectangular Textures Supported: No",
                "OpenGL Capabilities - Shaders Supported: No",
                "OpenGL Capabilities - Max Texture Size: 8192x8192",
                "OpenGL Capabilities - Shared Context: No",
            }),
            Lines(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL)));
  EXPECT_EQ(wxSize(8192, 8192), OpenGLRenderer::m_maxTextureSize);
  EXPECT_TRUE(OpenGLRenderer::m_isRecommended);
}

TEST_F(Probe, NotRecommendedRendererAddsTheInformationLine) {
  GLTestRenderer* renderer = Renderer();
  FakeDriver driver;
  driver.renderer = "Mesa GLX Indirect";
  GLTestRenderer::Probe(renderer, driver.Queries());
  EXPECT_FALSE(OpenGLRenderer::m_isRecommended);
  const std::vector<std::string> lines = Lines(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
  ASSERT_EQ(11u, lines.size());
  EXPECT_EQ(kNotRecommendedLine, lines.back());
}

// The rule assigns the flag both ways, not only clearing it.
TEST_F(Probe, RecommendationIsAssignedEveryTime) {
  GLTestRenderer* renderer = Renderer();
  OpenGLRenderer::m_isRecommended = false;
  FakeDriver driver;
  GLTestRenderer::Probe(renderer, driver.Queries());
  EXPECT_TRUE(OpenGLRenderer::m_isRecommended);
  EXPECT_EQ(10u, Lines(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL)).size());
}

TEST_F(Probe, VendorAndVersionTakeNoPartInTheRecommendation) {
  GLTestRenderer* renderer = Renderer();
  FakeDriver driver;
  driver.vendor = "Indirect Software Rasterizer GDI Generic";
  driver.version = "GDI Generic Indirect";
  GLTestRenderer::Probe(renderer, driver.Queries());
  EXPECT_TRUE(OpenGLRenderer::m_isRecommended);
}

// Hosts have always seen the description of mode 3 cleared while the lines go to mode 2.
TEST_F(Probe, ClearsTheReservedDescriptionButAppendsToOpenGL) {
  GLTestRenderer* renderer = Renderer();
  RendererBase::AppendRendererDesc(RENDER_MODE_RESERVED, "reserved");
  RendererBase::AppendRendererDesc(RENDER_MODE_OPENGL, "earlier");
  FakeDriver driver;
  GLTestRenderer::Probe(renderer, driver.Queries());
  EXPECT_EQ("", RendererBase::GetRendererDesc(RENDER_MODE_RESERVED));
  const std::vector<std::string> lines = Lines(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
  ASSERT_EQ(11u, lines.size());
  EXPECT_EQ("earlier", lines.front());
}

TEST_F(Probe, UnchangedContextModeSwitchesNothing) {
  GLTestRenderer* renderer = Renderer();
  InternalGLCanvas* canvas = renderer->m_canvas;
  wxGLContext* context = renderer->m_context;
  FakeDriver driver;
  GLTestRenderer::Probe(renderer, driver.Queries());
  EXPECT_EQ(canvas, renderer->m_canvas);
  EXPECT_EQ(context, renderer->m_context);
  EXPECT_EQ(context, OpenGLRenderer::m_sharedContext);
  EXPECT_FALSE(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL).Contains("Switching"));
}

TEST_F(GLTest, FirstRendererReportsTheRealMesaContext) {
  LogCapture log;
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  const wxString vendor = reinterpret_cast<const char*>(glGetString(GL_VENDOR));
  const wxString name = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
  const wxString version = reinterpret_cast<const char*>(glGetString(GL_VERSION));
  GLint maxSize = 0;
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
  ASSERT_TRUE(name.StartsWith("llvmpipe")) << name;
  ASSERT_TRUE(version.Contains("Mesa")) << version;

  const std::vector<std::string> expected = {
      ("OpenGL Capabilities - Vendor: " + vendor).utf8_string(),
      ("OpenGL Capabilities - Renderer: " + name).utf8_string(),
      ("OpenGL Capabilities - Version: " + version).utf8_string(),
      "OpenGL Capabilities - BGR Supported: Yes",
      "OpenGL Capabilities - Pixel Buffer Supported: Yes",
      "OpenGL Capabilities - Non Power of 2 Supported: Yes",
      "OpenGL Capabilities - Rectangular Textures Supported: Yes",
      "OpenGL Capabilities - Shaders Supported: Yes",
      wxString::Format("OpenGL Capabilities - Max Texture Size: %dx%d", maxSize, maxSize)
          .utf8_string(),
      "OpenGL Capabilities - Shared Context: No",
  };
  EXPECT_EQ(expected, Lines(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL)));
  EXPECT_EQ(wxSize(maxSize, maxSize), OpenGLRenderer::m_maxTextureSize);
  EXPECT_TRUE(OpenGLRenderer::m_isRecommended) << "llvmpipe names no unwanted implementation";
  EXPECT_TRUE(OpenGLRenderer::m_isSupported);

  std::vector<std::string> logged;
  for (const LogLine& line : log.Lines()) {
    if (line.function == "AppendRendererDesc") logged.push_back(line.text);
  }
  EXPECT_EQ(expected, logged);
}

TEST_F(GLTest, ProbeRunsOncePerProcess) {
  MakeRenderer();
  RendererBase::ClearRendererDesc(RENDER_MODE_OPENGL);
  LogCapture log;
  GLTestRenderer* second = MakeRenderer();
  EXPECT_EQ("", RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
  renderers.clear();
  ASSERT_EQ(nullptr, OpenGLRenderer::m_sharedContext);
  second = MakeRenderer();
  EXPECT_TRUE(second->HasContext());
  EXPECT_EQ("", RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
  EXPECT_EQ(0u, log.Lines().size()) << log.Lines()[0].text;
}

TEST_F(GLTest, RendererCreatedWhileUnsupportedDoesNotProbe) {
  OpenGLRenderer::m_isSupported = false;
  GLTestRenderer* unsupported = MakeRenderer();
  EXPECT_FALSE(unsupported->GetIsSupported());
  EXPECT_EQ("", RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
  EXPECT_EQ(wxSize(0, 0), OpenGLRenderer::m_maxTextureSize);

  OpenGLRenderer::m_isSupported = true;
  GLTestRenderer* supported = MakeRenderer();
  EXPECT_TRUE(supported->GetIsSupported());
  EXPECT_EQ(10u, Lines(RendererBase::GetRendererDesc(RENDER_MODE_OPENGL)).size());
}
