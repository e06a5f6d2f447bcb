// GLEntryPoints: the OpenGL functions beyond version 1.1 that the GL back-end calls (pixel
// buffers, ARB fragment programs, multitexturing), looked up through the window system.
//
// The process-wide set is looked up once, on first use, and never again; a function the
// implementation does not have stays null, and the back-end then treats the extension that
// needs it as missing. It does not check extension strings or contexts (the capability
// probe does), and it is the only place that knows how the window system hands functions out.
#pragma once

#include <GL/gl.h>
#include <GL/glext.h>

class GLEntryPoints {
 public:
  using Proc = void (*)();
  using ProcLookup = Proc (*)(const char* name);

  // The process's entry points, looked up through the window system on the first call.
  static const GLEntryPoints& Get();

  // Looks every entry point up through `lookup`; a name it does not know stays null.
  explicit GLEntryPoints(ProcLookup lookup);

  bool HasBufferFunctions() const;
  bool HasProgramFunctions() const;
  bool HasMultitextureFunctions() const;

  // Buffer objects, for pixel-unpack buffers.
  PFNGLGENBUFFERSPROC GenBuffers;
  PFNGLBINDBUFFERPROC BindBuffer;
  PFNGLBUFFERDATAPROC BufferData;
  PFNGLMAPBUFFERPROC MapBuffer;
  PFNGLUNMAPBUFFERPROC UnmapBuffer;
  PFNGLDELETEBUFFERSPROC DeleteBuffers;
  // ARB fragment programs, for the YUV conversion.
  PFNGLGENPROGRAMSARBPROC GenProgramsARB;
  PFNGLBINDPROGRAMARBPROC BindProgramARB;
  PFNGLPROGRAMSTRINGARBPROC ProgramStringARB;
  PFNGLDELETEPROGRAMSARBPROC DeleteProgramsARB;
  // Multitexturing, for the planes of a YUV frame.
  PFNGLACTIVETEXTUREPROC ActiveTexture;
  PFNGLMULTITEXCOORD2FARBPROC MultiTexCoord2f;
};
