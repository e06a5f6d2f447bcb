// CurrentContextScope: a GL context made current on a canvas for as long as the scope lives.
//
// The GL back-end deletes its names through it: a delete acts on the objects of whatever
// context is current, so it must run in the renderer's own share group, and the context the
// host (or another renderer) had current must be current again afterwards. Unlike the
// renderer's SetCurrent it also makes a context current on a hidden canvas: a hidden window
// still has its (unmapped) native window, and that is all a context needs.
#pragma once

#include <memory>

class wxGLCanvas;
class wxGLContext;

class CurrentContextScope {
 public:
  // Makes `context` current on `canvas`; a canvas without a native window changes nothing.
  CurrentContextScope(const wxGLContext& context, const wxGLCanvas& canvas);
  // Makes current again what was current at construction: that context with its drawables,
  // or no context at all.
  ~CurrentContextScope();
  CurrentContextScope(const CurrentContextScope&) = delete;
  CurrentContextScope& operator=(const CurrentContextScope&) = delete;

 private:
  struct Previous;
  std::unique_ptr<Previous> m_previous;  // null when nothing was switched
};

// Makes no context current when one is current on `canvas`: a canvas about to be destroyed
// must not stay the current drawable, or the window system is later asked about a window that
// no longer exists (an X error at the next switch of contexts).
void ReleaseIfCurrentOn(const wxGLCanvas& canvas);
// Leaves the calling thread with no context current: what a renderer does when its own context
// cannot be made current, so that its calls reach no other renderer's context.
void MakeNoContextCurrent();
