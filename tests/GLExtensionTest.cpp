// The extension-string matchers and the one-shot reading of the extension list.
#include <cstdlib>

#include <GL/gl.h>

#include "GLTest.h"

namespace {

const char* const kNoListLine =
    "Error getting supported extensions. Is your OpenGL context created and set?\n";

// The captured lines that list the extensions.
std::vector<LogLine> ExtensionListLines(const LogCapture& log) {
  std::vector<LogLine> lines;
  for (const LogLine& line : log.Lines()) {
    if (line.text.rfind("GL Extensions: ", 0) == 0) lines.push_back(line);
  }
  return lines;
}

}  // namespace

TEST(ExtensionMatcher, LongerTokenBeforeTheNameIsPassedOver) {
  EXPECT_TRUE(IsExtensionSupported("GL_EXT_bgra_x GL_EXT_bgra", "GL_EXT_bgra"));
}

TEST(ExtensionMatcher, ALongerTokenAloneIsNoMatch) {
  EXPECT_FALSE(IsExtensionSupported("GL_EXT_bgra_x", "GL_EXT_bgra"));
}

TEST(ExtensionMatcher, NameAtTheStartOfTheList) {
  EXPECT_TRUE(IsExtensionSupported("GL_EXT_bgra GL_ARB_multisample", "GL_EXT_bgra"));
}

TEST(ExtensionMatcher, NameAsTheLastToken) {
  EXPECT_TRUE(IsExtensionSupported("GL_ARB_multisample GL_EXT_bgra", "GL_EXT_bgra"));
}

TEST(ExtensionMatcher, NameAsTheOnlyToken) {
  EXPECT_TRUE(IsExtensionSupported("GL_EXT_bgra", "GL_EXT_bgra"));
}

TEST(ExtensionMatcher, TokenEndingWithTheNameIsNoMatch) {
  EXPECT_FALSE(IsExtensionSupported("XGL_EXT_bgra GL_ARB_multisample", "GL_EXT_bgra"));
}

// Mesa's own list has this pair: the shadow variant comes first and must not count.
TEST(ExtensionMatcher, WholeTokenAfterALongerOneSharingItsStart) {
  EXPECT_TRUE(IsExtensionSupported("GL_ARB_fragment_program_shadow GL_ARB_fragment_program",
                                   "GL_ARB_fragment_program"));
  EXPECT_FALSE(IsExtensionSupported("GL_ARB_fragment_program_shadow", "GL_ARB_fragment_program"));
}

TEST(ExtensionMatcher, OnlySpacesSeparateTokens) {
  EXPECT_FALSE(IsExtensionSupported("GL_ARB_multisample\tGL_EXT_bgra", "GL_EXT_bgra"));
  EXPECT_FALSE(IsExtensionSupported("GL_EXT_bgra\nGL_ARB_multisample", "GL_EXT_bgra"));
  EXPECT_TRUE(IsExtensionSupported("GL_ARB_multisample  GL_EXT_bgra ", "GL_EXT_bgra"));
}

TEST(ExtensionMatcher, EmptyListOrNameFindsNothing) {
  EXPECT_FALSE(IsExtensionSupported("", "GL_EXT_bgra"));
  EXPECT_FALSE(IsExtensionSupported("GL_EXT_bgra", ""));
  EXPECT_FALSE(IsExtensionSupported("GL_EXT_bgra", nullptr));
  EXPECT_FALSE(IsExtensionSupported(nullptr, "GL_EXT_bgra"));
}

TEST(GLXExtensionMatcher, AnswersFalseForAnyNameOnEveryCall) {
  for (int call = 0; call < 3; ++call) {
    EXPECT_FALSE(IsGLXExtensionSupported("GLX_EXT_swap_control"));
    EXPECT_FALSE(IsGLXExtensionSupported("GLX_ARB_get_proc_address"));
    EXPECT_FALSE(IsGLXExtensionSupported(""));
  }
}

// The server really has GLX_EXT_swap_control; the matcher still never reads its list.
TEST_F(GLTest, GLXMatcherAnswersFalseWithALiveContext) {
  MakeRenderer()->SetCurrent();
  EXPECT_FALSE(IsGLXExtensionSupported("GLX_EXT_swap_control"));
  EXPECT_FALSE(IsGLXExtensionSupported("GLX_EXT_swap_control"));
}

TEST_F(GLTest, ExtensionListIsReadOnceFromTheFirstContextAndLogged) {
  LogCapture log;
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  const std::string list = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
  const std::vector<LogLine> listed = ExtensionListLines(log);
  ASSERT_EQ(1u, listed.size());
  EXPECT_EQ("GL Extensions: " + list, listed[0].text);
  EXPECT_EQ(wxLOG_Info, listed[0].level);
  EXPECT_EQ("renderer/OpenGLRenderer", listed[0].file);
  EXPECT_EQ("IsExtensionSupported", listed[0].function);

  EXPECT_TRUE(IsExtensionSupported("GL_EXT_bgra"));
  EXPECT_FALSE(IsExtensionSupported("GL_EXT_bgra_x"));
  EXPECT_EQ(1u, ExtensionListLines(log).size()) << "the list is read and logged only once";
}

TEST_F(GLTest, FirstQueryWithoutAContextMakesEveryLaterQueryFalse) {
  LogCapture log;
  EXPECT_FALSE(IsExtensionSupported("GL_EXT_bgra"));
  ASSERT_EQ(1, log.Count(kNoListLine));
  EXPECT_EQ("renderer/OpenGLRenderer", log.Lines()[0].file);
  EXPECT_EQ("IsExtensionSupported", log.Lines()[0].function);

  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  ASSERT_NE(nullptr, glGetString(GL_EXTENSIONS)) << "a context with extensions is current now";
  EXPECT_FALSE(IsExtensionSupported("GL_EXT_bgra"));
  EXPECT_EQ(1, log.Count(kNoListLine));
  EXPECT_TRUE(ExtensionListLines(log).empty());
  EXPECT_FALSE(OpenGLRenderer::m_isBgrSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isPixelBufferSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isNonPow2Supported);
  EXPECT_FALSE(OpenGLRenderer::m_isShaderSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isTextRectSupported);
  const wxString desc = RendererBase::GetRendererDesc(RENDER_MODE_OPENGL);
  EXPECT_TRUE(desc.Contains("OpenGL Capabilities - BGR Supported: No\n")) << desc;
  EXPECT_TRUE(desc.Contains("OpenGL Capabilities - Shaders Supported: No\n")) << desc;
}

// Mesa hides extensions named in MESA_EXTENSION_OVERRIDE from every context of the process
// (hiding GL_EXT_texture_rectangle hides its NV twin too, they are one feature to Mesa); the
// flags follow what the driver really says.
TEST_F(GLTest, RealDriverAnswersDecideTheFlags) {
  setenv("MESA_EXTENSION_OVERRIDE",
         "-GL_EXT_bgra -GL_ARB_fragment_program -GL_EXT_texture_rectangle", 1);
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  const std::string list = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
  for (const char* hidden : {"GL_EXT_bgra", "GL_ARB_fragment_program", "GL_EXT_texture_rectangle",
                             "GL_NV_texture_rectangle"}) {
    ASSERT_FALSE(IsExtensionSupported(list.c_str(), hidden)) << hidden;
  }
  EXPECT_FALSE(OpenGLRenderer::m_isBgrSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isShaderSupported);
  EXPECT_FALSE(OpenGLRenderer::m_isTextRectSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isPixelBufferSupported);
  EXPECT_TRUE(OpenGLRenderer::m_isNonPow2Supported);
  const wxString desc = RendererBase::GetRendererDesc(RENDER_MODE_OPENGL);
  EXPECT_TRUE(desc.Contains("OpenGL Capabilities - BGR Supported: No\n")) << desc;
  EXPECT_TRUE(desc.Contains("OpenGL Capabilities - Pixel Buffer Supported: Yes\n")) << desc;
  EXPECT_TRUE(desc.Contains("OpenGL Capabilities - Rectangular Textures Supported: No\n")) << desc;
  EXPECT_TRUE(desc.Contains("OpenGL Capabilities - Shaders Supported: No\n")) << desc;
}
