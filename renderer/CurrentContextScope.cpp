// CurrentContextScope: switching to a context and back through the window system (GLX).
#include "CurrentContextScope.h"

#include <utility>

#include <wx/glcanvas.h>
#include <wx/utils.h>

#include <GL/glx.h>

struct CurrentContextScope::Previous {
  Display* display;
  GLXDrawable draw;
  GLXDrawable read;
  GLXContext context;
};

CurrentContextScope::CurrentContextScope(const wxGLContext& context, const wxGLCanvas& canvas) {
  if (!canvas.GetXWindow()) return;
  auto previous =
      std::make_unique<Previous>(Previous{wxGetX11Display(), glXGetCurrentDrawable(),
                                          glXGetCurrentReadDrawable(), glXGetCurrentContext()});
  if (Display* current = glXGetCurrentDisplay()) previous->display = current;
  if (context.SetCurrent(canvas)) m_previous = std::move(previous);
}

CurrentContextScope::~CurrentContextScope() {
  if (!m_previous) return;
  const Previous& previous = *m_previous;
  if (previous.context) {
    glXMakeContextCurrent(previous.display, previous.draw, previous.read, previous.context);
  } else {
    glXMakeContextCurrent(previous.display, None, None, nullptr);
  }
}

void ReleaseIfCurrentOn(const wxGLCanvas& canvas) {
  const Window window = canvas.GetXWindow();
  if (!window || glXGetCurrentDrawable() != window) return;
  glXMakeContextCurrent(glXGetCurrentDisplay(), None, None, nullptr);
}

void MakeNoContextCurrent() {
  Display* display = glXGetCurrentDisplay();
  if (display) glXMakeContextCurrent(display, None, None, nullptr);
}
