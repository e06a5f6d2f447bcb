// GLFaults: switches that make the GL back-end's own seams fail on purpose, so that a test or a
// host's drill can see the facade fall back to software as it would on a broken driver.
//
// Each switch stands for one failure of the machine: no GL visual at all, a context that cannot
// be made current, a texture proxy that refuses every size, a fragment program that does not
// compile, a pixel buffer that does not map, a GL error raised by a frame upload. The back-end
// asks the switch at the very place where the real failure would show, and takes the same road
// it takes for the real one. Every switch is off unless someone turns it on; the library never
// does. It does not change the back-end's code paths per test, count anything or fail anything
// outside the GL back-end.
#pragma once

#include <atomic>

enum class GLFault {
  NoVisual,          // the display offers no GL visual (no GLX, or no GL at all)
  MakeCurrent,       // making a renderer's context current fails
  TextureProxy,      // the texture proxy accepts no size
  ProgramCompile,    // a fragment program does not compile
  PixelBufferMap,    // mapping a pixel buffer gives nothing
  ErrorAfterUpload,  // a frame's upload leaves a GL error behind
};

class GLFaults {
 public:
  static void Set(GLFault fault, bool on);
  static bool IsSet(GLFault fault);
  // Every switch off.
  static void Clear();

 private:
  static std::atomic<unsigned> s_switches;
};

// A fault switched on for as long as this lives.
class ScopedGLFault {
 public:
  explicit ScopedGLFault(GLFault fault) : m_fault(fault) { GLFaults::Set(fault, true); }
  ~ScopedGLFault() { GLFaults::Set(m_fault, false); }
  ScopedGLFault(const ScopedGLFault&) = delete;
  ScopedGLFault& operator=(const ScopedGLFault&) = delete;

 private:
  GLFault m_fault;
};
