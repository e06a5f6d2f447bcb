// GLEntryPoints: the one place that asks the window system (GLX here) for GL functions.
#include "GLEntryPoints.h"

#include <GL/glx.h>

namespace {

GLEntryPoints::Proc WindowSystemLookup(const char* name) {
  return glXGetProcAddressARB(reinterpret_cast<const GLubyte*>(name));
}

template <typename Function>
Function Resolve(GLEntryPoints::ProcLookup lookup, const char* name) {
  return reinterpret_cast<Function>(lookup(name));
}

}  // namespace

const GLEntryPoints& GLEntryPoints::Get() {
  static const GLEntryPoints entryPoints(WindowSystemLookup);
  return entryPoints;
}

GLEntryPoints::GLEntryPoints(ProcLookup lookup)
    : GenBuffers(Resolve<PFNGLGENBUFFERSPROC>(lookup, "glGenBuffers")),
      BindBuffer(Resolve<PFNGLBINDBUFFERPROC>(lookup, "glBindBuffer")),
      BufferData(Resolve<PFNGLBUFFERDATAPROC>(lookup, "glBufferData")),
      MapBuffer(Resolve<PFNGLMAPBUFFERPROC>(lookup, "glMapBuffer")),
      UnmapBuffer(Resolve<PFNGLUNMAPBUFFERPROC>(lookup, "glUnmapBuffer")),
      DeleteBuffers(Resolve<PFNGLDELETEBUFFERSPROC>(lookup, "glDeleteBuffers")),
      GenProgramsARB(Resolve<PFNGLGENPROGRAMSARBPROC>(lookup, "glGenProgramsARB")),
      BindProgramARB(Resolve<PFNGLBINDPROGRAMARBPROC>(lookup, "glBindProgramARB")),
      ProgramStringARB(Resolve<PFNGLPROGRAMSTRINGARBPROC>(lookup, "glProgramStringARB")),
      DeleteProgramsARB(Resolve<PFNGLDELETEPROGRAMSARBPROC>(lookup, "glDeleteProgramsARB")),
      ActiveTexture(Resolve<PFNGLACTIVETEXTUREPROC>(lookup, "glActiveTexture")),
      MultiTexCoord2f(Resolve<PFNGLMULTITEXCOORD2FARBPROC>(lookup, "glMultiTexCoord2f")) {}

bool GLEntryPoints::HasBufferFunctions() const {
  return GenBuffers && BindBuffer && BufferData && MapBuffer && UnmapBuffer && DeleteBuffers;
}

bool GLEntryPoints::HasProgramFunctions() const {
  return GenProgramsARB && BindProgramARB && ProgramStringARB && DeleteProgramsARB;
}

bool GLEntryPoints::HasMultitextureFunctions() const { return ActiveTexture && MultiTexCoord2f; }
