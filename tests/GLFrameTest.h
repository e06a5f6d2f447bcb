// The fixture of the GL frame suites: renderers fed with test pictures through the frame path
// the facade uses, painted, and the pictures they must show; plus the GL checks those suites
// share.
#pragma once

#include <memory>
#include <string>

#include "ExpectedPicture.h"
#include "FramePicture.h"
#include "GLTest.h"

// Sets a variable for as long as it lives and restores its previous value afterwards (the
// renderer's class-wide capability flags, for instance, which a test may turn off).
template <typename T>
class ScopedValue {
 public:
  ScopedValue(T& variable, T value) : m_variable(variable), m_previous(variable) {
    m_variable = value;
  }
  ~ScopedValue() { m_variable = m_previous; }
  ScopedValue(const ScopedValue&) = delete;
  ScopedValue& operator=(const ScopedValue&) = delete;

 private:
  T& m_variable;
  T m_previous;
};

// No GL error pending in the current context (reading it clears it).
::testing::AssertionResult NoGLError();

// GL objects of the current context, as GL itself reports them.
wxSize TextureSize(unsigned int target, unsigned int texture);
int TextureInternalFormat(unsigned int target, unsigned int texture);
int BufferSize(unsigned int buffer);
bool IsBufferMapped(unsigned int buffer);
// Where a mapped buffer is mapped (null when it is not).
void* BufferMapping(unsigned int buffer);
std::string ProgramText(unsigned int program);
// The fragment program bound now (0 for none).
int BoundProgram();
// A debugging label, which stays with the object and not with its name: a texture deleted
// and made again under the same name has lost it.
void LabelTexture(unsigned int texture, const std::string& label);
std::string TextureLabel(unsigned int texture);

// One log line, alone: its exact text, from renderer/OpenGLRenderer and `function`.
::testing::AssertionResult LoggedAlone(const LogCapture& log, const std::string& text,
                                       const std::string& function);

class GLFrameTest : public GLTest {
 protected:
  // A renderer whose context is current.
  GLTestRenderer* MakeCurrentRenderer();
  // The same, uploading through pixel buffers (or client memory) for the rest of the test.
  GLTestRenderer* MakeCurrentRenderer(bool pixelBuffers);
  // Hands `picture` over as the decoder would: GetFrameBuffer, writing the lent planes,
  // FlushFrameBuffer; no GL error may be left.
  ::testing::AssertionResult Feed(GLTestRenderer* renderer, const FramePicture& picture);
  // Writes `picture` into planes the renderer lent, flushes them and paints: the picture must
  // be what the tile shows.
  ::testing::AssertionResult WrittenFrameIsShown(GLTestRenderer* renderer,
                                                 const FramePicture& picture,
                                                 unsigned char** planes, int* pitches);
  // Paints the renderer and returns what it drew; no GL error may be left.
  wxImage PaintFrame(GLTestRenderer* renderer);
  // What the tile must show with `picture` drawn where the renderer places its frame now.
  ::testing::AssertionResult Expected(GLTestRenderer* renderer, const FramePicture& picture,
                                      wxImage* expected);
  // The quad the renderer draws its frame with: its destination and, in texels, the first and
  // last texel of its source rectangle.
  static QuadPlacement FramePlacement(GLTestRenderer* renderer);
  // The name of the running test, for failure pictures.
  static std::string TestName();

 private:
  std::unique_ptr<ScopedValue<bool>> m_pixelBufferSupport;
};
