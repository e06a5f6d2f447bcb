// GLErrors: clearing the GL error state before a check that decides success.
#pragma once

#include <GL/gl.h>

// Forgets every error earlier calls left pending (the host's own GL code in an overlay callback,
// an unmap of a buffer that was never mapped), so that a check that follows sees only the errors
// of the calls it guards. Bounded, as a lost context may report errors for ever.
inline void DrainGLErrors() {
  constexpr int kMostErrorsRead = 16;
  for (int i = 0; i < kMostErrorsRead; ++i) {
    if (glGetError() == GL_NO_ERROR) return;
  }
}
