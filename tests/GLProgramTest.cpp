// The YUV fragment programs, through the renderer on the real Mesa context: every pixel of a
// frame of known samples, in every format and through both upload paths, against the CPU
// reference of the conversion; the worked examples; and LoadShader in both forms.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

#include <wx/filename.h>

#include <renderer/FragmentPrograms.h>

#include "GLFrameTest.h"

namespace {

struct FormatCase {
  const char* name;
  int format;
  bool pixelBuffers;
};

void PrintTo(const FormatCase& format, std::ostream* out) { *out << format.name; }

bool IsRgb(int format) {
  return format == PIXEL_FORMAT_RGB24 || format == PIXEL_FORMAT_BGR24 ||
         format == PIXEL_FORMAT_RGBA32;
}

// The frame drawn 1:1: as large as the tile, so it fills the tile at its own aspect ratio.
class FrameColours : public GLFrameTest, public ::testing::WithParamInterface<FormatCase> {
 protected:
  // A renderer holding `picture`, uploaded the way the case asks.
  GLTestRenderer* Show(const FramePicture& picture) {
    GLTestRenderer* renderer = MakeCurrentRenderer(GetParam().pixelBuffers);
    EXPECT_TRUE(Feed(renderer, picture));
    EXPECT_EQ(GetParam().pixelBuffers ? renderer->m_textures.size() : 0u,
              renderer->m_pixelBuffers.size())
        << "the upload took the other path";
    return renderer;
  }

  int Tolerance() const {
    return IsRgb(GetParam().format) ? kExactPixels : kYuvConversionTolerance;
  }
};

std::vector<FormatCase> BothPaths(const std::vector<std::pair<const char*, int>>& formats) {
  std::vector<FormatCase> cases;
  for (const auto& [name, format] : formats) {
    cases.push_back({name, format, true});
    cases.push_back({name, format, false});
  }
  return cases;
}

const std::vector<std::pair<const char*, int>> kYuvFormats = {
    {"I420", PIXEL_FORMAT_I420}, {"YV12", PIXEL_FORMAT_YV12}, {"YUV422P", PIXEL_FORMAT_YUV422P},
    {"NV12", PIXEL_FORMAT_NV12}, {"YUYV", PIXEL_FORMAT_YUYV}, {"UYVY", PIXEL_FORMAT_UYVY}};
const std::vector<std::pair<const char*, int>> kRgbFormats = {
    {"RGB24", PIXEL_FORMAT_RGB24}, {"BGR24", PIXEL_FORMAT_BGR24}, {"RGBA32", PIXEL_FORMAT_RGBA32}};

std::string CaseName(const ::testing::TestParamInfo<FormatCase>& info) {
  return std::string(info.param.name) + (info.param.pixelBuffers ? "_PixelBuffers" : "_Client");
}

}  // namespace

TEST_P(FrameColours, EveryPixelMatchesTheReference) {
  const FramePicture picture = FramePicture::Bars(GetParam().format, tile->GetClientSize());
  GLTestRenderer* renderer = Show(picture);
  wxImage expected;
  ASSERT_TRUE(Expected(renderer, picture, &expected));
  EXPECT_TRUE(ImagesNear(PaintFrame(renderer), expected, Tolerance(), TestName()));
}

INSTANTIATE_TEST_SUITE_P(Yuv, FrameColours, ::testing::ValuesIn(BothPaths(kYuvFormats)), CaseName);
INSTANTIATE_TEST_SUITE_P(Rgb, FrameColours, ::testing::ValuesIn(BothPaths(kRgbFormats)), CaseName);

namespace {

using YuvColours = FrameColours;

}  // namespace

// Y = U = V = 128: y = 1.1643 x 0.502 - 0.0625 = 0.522, u = v = 0.002, so close to
// (0.525, 0.520, 0.526), that is (134, 133, 134) in 8 bits.
TEST_P(YuvColours, MidGrey) {
  const FramePicture::Yuv grey{128, 128, 128};
  GLTestRenderer* renderer =
      Show(FramePicture::Solid(GetParam().format, tile->GetClientSize(), grey));
  const wxColour expected(134, 133, 134);
  EXPECT_TRUE(
      PixelNear(SolidImage(wxSize(1, 1), FramePicture::ProgramColour(grey)), 0, 0, expected, 1));
  EXPECT_TRUE(ImagesNear(PaintFrame(renderer), SolidImage(tile->GetClientSize(), expected),
                         kYuvConversionTolerance, TestName()));
}

// Black at the video level (Y = 16, U = V = 128) is not black: y = 1.1643 x 16/255 - 0.0625
// is about 0.0105, because the offset is subtracted after the scaling.
TEST_P(YuvColours, BlackLevelIsSlightlyAboveZero) {
  const FramePicture::Yuv black{16, 128, 128};
  GLTestRenderer* renderer =
      Show(FramePicture::Solid(GetParam().format, tile->GetClientSize(), black));
  const wxColour expected(3, 2, 4);
  EXPECT_EQ(expected, FramePicture::ProgramColour(black));
  const wxImage drawn = PaintFrame(renderer);
  EXPECT_TRUE(ImagesNear(drawn, SolidImage(tile->GetClientSize(), expected),
                         kYuvConversionTolerance, TestName()));
  EXPECT_GT(drawn.GetRed(50, 50) + drawn.GetBlue(50, 50), 0);
}

INSTANTIATE_TEST_SUITE_P(Yuv, YuvColours, ::testing::ValuesIn(BothPaths(kYuvFormats)), CaseName);

namespace {

using PackedPairs = FrameColours;

}  // namespace

// Pairs alternate between two chroma pairs and each holds a dark and a bright luma: both
// fragments of a pair take the pair's U and V and their own Y.
TEST_P(PackedPairs, BothPixelsOfAPairTakeItsChromaAndTheirOwnLuma) {
  const FramePicture picture = FramePicture::MakeYuv(
      GetParam().format, tile->GetClientSize(), [](int x, int) { return x % 2 ? 220 : 40; },
      [](int cx, int) {
        return cx % 2 ? FramePicture::Yuv{0, 200, 60} : FramePicture::Yuv{0, 60, 200};
      });
  GLTestRenderer* renderer = Show(picture);
  const wxImage drawn = PaintFrame(renderer);
  // Pixels 10 and 11 sample texels 10 and 11 (pair 5); 12 and 13 the next pair.
  EXPECT_TRUE(
      PixelNear(drawn, 10, 5, FramePicture::ProgramColour({40, 200, 60}), kYuvConversionTolerance));
  EXPECT_TRUE(PixelNear(drawn, 11, 5, FramePicture::ProgramColour({220, 200, 60}),
                        kYuvConversionTolerance));
  EXPECT_TRUE(
      PixelNear(drawn, 12, 5, FramePicture::ProgramColour({40, 60, 200}), kYuvConversionTolerance));
  EXPECT_TRUE(PixelNear(drawn, 13, 5, FramePicture::ProgramColour({220, 60, 200}),
                        kYuvConversionTolerance));
  wxImage expected;
  ASSERT_TRUE(Expected(renderer, picture, &expected));
  EXPECT_TRUE(ImagesNear(drawn, expected, kYuvConversionTolerance, TestName()));
}

INSTANTIATE_TEST_SUITE_P(Packed, PackedPairs,
                         ::testing::ValuesIn(BothPaths({{"YUYV", PIXEL_FORMAT_YUYV},
                                                        {"UYVY", PIXEL_FORMAT_UYVY}})),
                         CaseName);

// ---- The program texts -------------------------------------------------------------------------

namespace {

class Programs : public GLFrameTest {
 protected:
  // A file in the test's artifact directory holding `text`.
  static std::string WriteFile(const std::string& name, const std::string& text) {
    const std::string path = ArtifactDirectory() + "/" + name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
};

const char kMinimalProgram[] = "!!ARBfp1.0\nMOV result.color, fragment.color;\nEND\n";

// The instructions of a program text: the first word of every line that is neither a
// comment, a declaration, the header nor the end.
std::set<std::string> Instructions(const std::string& text) {
  std::set<std::string> instructions;
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    if (word.empty() || word[0] == '#' || word[0] == '!' || word == "OPTION" || word == "PARAM" ||
        word == "TEMP" || word == "END" || word[0] == '{') {
      continue;
    }
    instructions.insert(word.substr(0, word.find_first_of(" ;")));
  }
  return instructions;
}

}  // namespace

TEST_F(Programs, TheFourProgramsCompileAndUseOnlyTheBasicInstructions) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const std::set<std::string> allowed = {"ABS", "FLR", "FRC", "SLT", "CMP",
                                         "MUL", "ADD", "MAD", "MOV", "TEX"};
  for (const char* program : {PSO_YUV, PSO_NV12, PSO_UYVY, PSO_YUYV}) {
    const std::string text(program);
    EXPECT_EQ(0u, text.rfind("!!ARBfp1.0\nOPTION ARB_precision_hint_fastest;\n", 0));
    EXPECT_EQ(text.size() - 4, text.rfind("END\n"));
    for (const std::string& instruction : Instructions(text)) {
      EXPECT_TRUE(allowed.count(instruction)) << instruction << " in\n" << text;
    }
    EXPECT_TRUE(renderer->LoadShader(program, static_cast<int>(text.size())));
  }
  ASSERT_EQ(4u, renderer->m_programs.size());
  for (const unsigned int program : renderer->m_programs) EXPECT_TRUE(IsProgramName(program));
  EXPECT_EQ(std::string(PSO_UYVY), ProgramText(renderer->m_programs[2]));
  EXPECT_TRUE(NoGLError());
}

TEST_F(Programs, ProgramThatDoesNotCompileIsDeletedAndLogged) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const LogCapture log;
  const std::string broken = "!!ARBfp1.0\nMOV result.color, nowhere;\nEND\n";
  EXPECT_FALSE(renderer->LoadShader(broken.c_str(), static_cast<int>(broken.size())));
  EXPECT_TRUE(LoggedAlone(log, "OpenGL Error - Failed to create shader: invalid operation (1282)",
                          "LoadShader"));
  EXPECT_TRUE(renderer->m_programs.empty());
  EXPECT_EQ(0, BoundProgram());
  EXPECT_TRUE(NoGLError());
}

TEST_F(Programs, NoProgramWithoutFragmentProgramSupport) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const ScopedValue<bool> shaders(OpenGLRenderer::m_isShaderSupported, false);
  EXPECT_FALSE(renderer->LoadShader(kMinimalProgram, sizeof kMinimalProgram - 1));
  EXPECT_TRUE(renderer->m_programs.empty());
}

TEST_F(Programs, ProgramFromAFile) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  EXPECT_TRUE(renderer->LoadShader(WriteFile("minimal.fp", kMinimalProgram).c_str()));
  ASSERT_EQ(1u, renderer->m_programs.size());
  EXPECT_EQ(std::string(kMinimalProgram), ProgramText(renderer->m_programs[0]));
}

// A file that cannot be opened: false and a message on standard output (no line end), and
// nothing in the log.
TEST_F(Programs, FileThatCannotBeOpenedIsReportedOnStandardOutput) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const LogCapture log;
  const std::string path = ArtifactDirectory() + "/no-such-directory/missing.fp";
  ::testing::internal::CaptureStdout();
  EXPECT_FALSE(renderer->LoadShader(path.c_str()));
  EXPECT_EQ("Failed to shader open file " + path + ".", ::testing::internal::GetCapturedStdout());
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_TRUE(renderer->m_programs.empty());
}

// Only the first 8000 bytes are read. A complete program padded to exactly 8000 bytes and
// followed by garbage compiles (the garbage is cut off); with the garbage inside the first
// 8000 bytes it does not.
TEST_F(Programs, FilesAreCutAt8000Bytes) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  const std::string head = "!!ARBfp1.0\n";
  const std::string tail = "MOV result.color, fragment.color;\nEND\n";
  const std::string garbage = "this is not a program\n";
  std::string padding;
  while (head.size() + padding.size() + tail.size() < 8000) padding += "#";
  padding.back() = '\n';
  const std::string program = head + padding + tail;
  ASSERT_EQ(8000u, program.size());
  EXPECT_TRUE(renderer->LoadShader(WriteFile("long.fp", program + garbage).c_str()));
  const std::string shorter = head + padding.substr(garbage.size()) + tail + garbage;
  ASSERT_LE(shorter.size(), 8000u);
  EXPECT_FALSE(renderer->LoadShader(WriteFile("garbage.fp", shorter).c_str()));
  EXPECT_EQ(1u, renderer->m_programs.size());
  EXPECT_TRUE(NoGLError());
}
