// Feeding, painting and expecting frames of the GL back-end.
#include "GLFrameTest.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>
#include <GL/glx.h>

::testing::AssertionResult NoGLError() {
  const GLenum error = glGetError();
  if (error == GL_NO_ERROR) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "GL error 0x" << std::hex << error << " pending";
}

wxSize TextureSize(unsigned int target, unsigned int texture) {
  glBindTexture(target, texture);
  GLint width = 0;
  GLint height = 0;
  glGetTexLevelParameteriv(target, 0, GL_TEXTURE_WIDTH, &width);
  glGetTexLevelParameteriv(target, 0, GL_TEXTURE_HEIGHT, &height);
  glBindTexture(target, 0);
  return wxSize(width, height);
}

int TextureInternalFormat(unsigned int target, unsigned int texture) {
  glBindTexture(target, texture);
  GLint format = 0;
  glGetTexLevelParameteriv(target, 0, GL_TEXTURE_INTERNAL_FORMAT, &format);
  glBindTexture(target, 0);
  return format;
}

namespace {

GLint BufferParameter(GLuint buffer, GLenum parameter) {
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  GLint value = 0;
  glGetBufferParameteriv(GL_PIXEL_UNPACK_BUFFER, parameter, &value);
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  return value;
}

}  // namespace

int BufferSize(unsigned int buffer) { return BufferParameter(buffer, GL_BUFFER_SIZE); }

bool IsBufferMapped(unsigned int buffer) {
  return BufferParameter(buffer, GL_BUFFER_MAPPED) == GL_TRUE;
}

void* BufferMapping(unsigned int buffer) {
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  void* mapping = nullptr;
  glGetBufferPointerv(GL_PIXEL_UNPACK_BUFFER, GL_BUFFER_MAP_POINTER, &mapping);
  glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
  return mapping;
}

namespace {

// ARB program functions are extensions: only the window system hands them out.
template <typename Function>
Function ProgramFunction(const char* name) {
  return reinterpret_cast<Function>(glXGetProcAddressARB(reinterpret_cast<const GLubyte*>(name)));
}

}  // namespace

std::string ProgramText(unsigned int program) {
  static const auto bind = ProgramFunction<PFNGLBINDPROGRAMARBPROC>("glBindProgramARB");
  static const auto text = ProgramFunction<PFNGLGETPROGRAMSTRINGARBPROC>("glGetProgramStringARB");
  static const auto parameter = ProgramFunction<PFNGLGETPROGRAMIVARBPROC>("glGetProgramivARB");
  bind(GL_FRAGMENT_PROGRAM_ARB, program);
  GLint length = 0;
  parameter(GL_FRAGMENT_PROGRAM_ARB, GL_PROGRAM_LENGTH_ARB, &length);
  std::string result(static_cast<size_t>(length), '\0');
  text(GL_FRAGMENT_PROGRAM_ARB, GL_PROGRAM_STRING_ARB, result.data());
  bind(GL_FRAGMENT_PROGRAM_ARB, 0);
  return result;
}

int BoundProgram() {
  static const auto parameter = ProgramFunction<PFNGLGETPROGRAMIVARBPROC>("glGetProgramivARB");
  GLint program = -1;
  parameter(GL_FRAGMENT_PROGRAM_ARB, GL_PROGRAM_BINDING_ARB, &program);
  return program;
}

void LabelTexture(unsigned int texture, const std::string& label) {
  glObjectLabel(GL_TEXTURE, texture, static_cast<GLsizei>(label.size()), label.c_str());
}

std::string TextureLabel(unsigned int texture) {
  char label[64] = {};
  GLsizei length = 0;
  glGetObjectLabel(GL_TEXTURE, texture, sizeof label, &length, label);
  return std::string(label, static_cast<size_t>(length));
}

::testing::AssertionResult LoggedAlone(const LogCapture& log, const std::string& text,
                                       const std::string& function) {
  if (log.Lines().size() != 1) {
    return ::testing::AssertionFailure() << log.Lines().size() << " log lines";
  }
  const LogLine& line = log.Lines()[0];
  if (line.text != text || line.file != "renderer/OpenGLRenderer" || line.function != function) {
    return ::testing::AssertionFailure()
           << "\"" << line.text << "\" from " << line.file << ", " << line.function;
  }
  return ::testing::AssertionSuccess();
}

GLTestRenderer* GLFrameTest::MakeCurrentRenderer() {
  GLTestRenderer* renderer = MakeRenderer();
  renderer->SetCurrent();
  return renderer;
}

// The capability probe of the first renderer sets the flag, so it is overridden afterwards.
GLTestRenderer* GLFrameTest::MakeCurrentRenderer(bool pixelBuffers) {
  GLTestRenderer* renderer = MakeCurrentRenderer();
  m_pixelBufferSupport =
      std::make_unique<ScopedValue<bool>>(OpenGLRenderer::m_isPixelBufferSupported, pixelBuffers);
  return renderer;
}

::testing::AssertionResult GLFrameTest::Feed(GLTestRenderer* renderer,
                                             const FramePicture& picture) {
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  const wxSize size = picture.Size();
  if (!renderer->GetFrameBuffer(size.x, size.y, picture.Format(), planes, pitches)) {
    return ::testing::AssertionFailure() << "GetFrameBuffer failed";
  }
  picture.Write(planes, pitches);
  if (!renderer->FlushFrameBuffer(planes, pitches)) {
    return ::testing::AssertionFailure() << "FlushFrameBuffer failed";
  }
  return NoGLError();
}

::testing::AssertionResult GLFrameTest::WrittenFrameIsShown(GLTestRenderer* renderer,
                                                            const FramePicture& picture,
                                                            unsigned char** planes, int* pitches) {
  picture.Write(planes, pitches);
  if (!renderer->FlushFrameBuffer(planes, pitches)) {
    return ::testing::AssertionFailure() << "FlushFrameBuffer failed";
  }
  wxImage expected;
  const ::testing::AssertionResult made = Expected(renderer, picture, &expected);
  if (!made) return made;
  return ImagesNear(PaintFrame(renderer), expected, kYuvConversionTolerance, TestName());
}

wxImage GLFrameTest::PaintFrame(GLTestRenderer* renderer) {
  const wxImage drawn = Paint(renderer);
  EXPECT_TRUE(NoGLError()) << "after the paint";
  return drawn;
}

QuadPlacement GLFrameTest::FramePlacement(GLTestRenderer* renderer) {
  wxRect destination;
  wxRect source;
  renderer->GetSubImageRect(destination, source, false);
  return QuadPlacement{destination, double(source.x), double(source.y),
                       double(source.x + source.width - 1), double(source.y + source.height - 1)};
}

::testing::AssertionResult GLFrameTest::Expected(GLTestRenderer* renderer,
                                                 const FramePicture& picture, wxImage* expected) {
  renderer->SetCurrent();
  GLint subpixelBits = 0;
  glGetIntegerv(GL_SUBPIXEL_BITS, &subpixelBits);
  const TexelSource texels{picture.Size(),
                           [&picture](int x, int y) { return picture.TexelColour(x, y); }};
  return ExpectedPicture(tile->GetClientSize(), kTileColour, FramePlacement(renderer), texels,
                         subpixelBits, expected);
}

std::string GLFrameTest::TestName() {
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = std::string(test->test_suite_name()) + "." + test->name();
  for (char& c : name) {
    if (c == '/') c = '_';
  }
  return name;
}
