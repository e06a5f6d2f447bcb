// The GL fixture and the read-back of what a renderer drew.
#include "GLTest.h"

#include <algorithm>

#include <GL/gl.h>
#include <GL/glx.h>
#include <X11/Xutil.h>
#include <wx/utils.h>

#include <renderer/InternalGLCanvas.h>

const wxColour GLTest::kTileColour(20, 90, 160);

wxImage ReadBackBuffer(const wxSize& size) {
  wxImage image(size);
  if (size.x <= 0 || size.y <= 0) return image;
  std::vector<unsigned char> rows(static_cast<size_t>(size.x) * size.y * 3);
  glReadBuffer(GL_BACK);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, size.x, size.y, GL_RGB, GL_UNSIGNED_BYTE, rows.data());
  const size_t rowBytes = static_cast<size_t>(size.x) * 3;
  for (int y = 0; y < size.y; ++y) {
    const unsigned char* from = rows.data() + static_cast<size_t>(size.y - 1 - y) * rowBytes;
    std::copy(from, from + rowBytes, image.GetData() + static_cast<size_t>(y) * rowBytes);
  }
  return image;
}

namespace {

// One 8-bit channel of a true-colour pixel.
unsigned char Channel(unsigned long pixel, unsigned long mask) {
  return static_cast<unsigned char>((pixel & mask) >> __builtin_ctzl(mask));
}

}  // namespace

bool WindowHasSize(InternalGLCanvas* canvas, const wxSize& size) {
  const Window window = canvas->GetXWindow();
  if (!window) return false;  // not realised yet
  Window root = 0;
  int x = 0;
  int y = 0;
  unsigned int width = 0;
  unsigned int height = 0;
  unsigned int border = 0;
  unsigned int depth = 0;
  XGetGeometry(wxGetX11Display(), window, &root, &x, &y, &width, &height, &border, &depth);
  return static_cast<int>(width) == size.x && static_cast<int>(height) == size.y;
}

wxImage ReadDrawable(unsigned long drawable, const wxRect& rect) {
  wxImage image(rect.GetSize());
  XImage* shown = XGetImage(wxGetX11Display(), drawable, rect.x, rect.y, rect.width, rect.height,
                            AllPlanes, ZPixmap);
  if (!shown) return image;
  for (int y = 0; y < rect.height; ++y) {
    for (int x = 0; x < rect.width; ++x) {
      const unsigned long pixel = XGetPixel(shown, x, y);
      image.SetRGB(x, y, Channel(pixel, shown->red_mask), Channel(pixel, shown->green_mask),
                   Channel(pixel, shown->blue_mask));
    }
  }
  XDestroyImage(shown);
  return image;
}

wxImage ReadWindow(InternalGLCanvas* canvas) {
  return ReadDrawable(canvas->GetXWindow(), wxRect(canvas->GetClientSize()));
}

wxImage ReadScreen(const wxRect& rect) {
  Display* display = wxGetX11Display();
  XSync(display, False);
  return ReadDrawable(DefaultRootWindow(display), rect);
}

void GLTest::SetUp() {
  WxTest::SetUp();
  tile = MakeTile(wxPoint(10, 10), wxSize(kTileWidth, kTileHeight));
  tile->SetBackgroundColour(kTileColour);
}

void GLTest::TearDown() {
  renderers.clear();
  WxTest::TearDown();
}

GLTestRenderer* GLTest::MakeRenderer(wxWindow* parent) {
  renderers.push_back(std::make_unique<GLTestRenderer>(parent ? parent : tile));
  GLTestRenderer* renderer = renderers.back().get();
  if (renderer->m_canvas) Settle(renderer);
  return renderer;
}

// Waits for the X window rather than for a paint: a window that another test process covers
// is never exposed, but it is resized all the same.
void GLTest::Settle(GLTestRenderer* renderer) { SettleCanvas(renderer, renderer->m_canvas); }

void SettleCanvas(OpenGLRenderer* renderer, InternalGLCanvas* canvas) {
  EXPECT_TRUE(PumpUntil([canvas] { return WindowHasSize(canvas, canvas->GetClientSize()); }))
      << "the canvas's window never took its size";
  // Mesa's software rasteriser learns a window's new size only when it swaps; one swap now
  // makes the next paint work at the canvas's final size.
  renderer->SetCurrent();
  renderer->SwapBuffers();
}

void GLTest::DestroyRenderer(GLTestRenderer* renderer) {
  const auto owned = std::find_if(renderers.begin(), renderers.end(),
                                  [renderer](const auto& item) { return item.get() == renderer; });
  ASSERT_NE(renderers.end(), owned);
  renderers.erase(owned);
}

wxImage GLTest::Paint(GLTestRenderer* renderer) {
  renderer->Render(nullptr);
  return renderer->drawn;
}

wxImage GLTest::BackgroundImage() const {
  return SolidImage(tile->GetClientSize(), tile->GetBackgroundColour());
}

::testing::AssertionResult GLTest::MoveToScreenPlace() {
  const wxPoint place(800, 600);
  frame->Move(place);
  frame->Raise();
  if (PumpUntil([this, place] { return frame->GetScreenPosition() == place; })) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << "the frame never reached " << place.x << ", " << place.y;
}

unsigned long NextXRequest() { return XNextRequest(wxGetX11Display()); }

const void* CurrentContext() { return glXGetCurrentContext(); }

unsigned long CurrentDrawable() { return glXGetCurrentDrawable(); }

void ReleaseCurrentContext() { glXMakeContextCurrent(wxGetX11Display(), None, None, nullptr); }

bool IsProgramName(unsigned int name) {
  static const auto isProgram = reinterpret_cast<PFNGLISPROGRAMARBPROC>(
      glXGetProcAddressARB(reinterpret_cast<const GLubyte*>("glIsProgramARB")));
  return isProgram(name) == GL_TRUE;
}

wxRect CurrentViewport() {
  GLint viewport[4] = {0, 0, 0, 0};
  glGetIntegerv(GL_VIEWPORT, viewport);
  return wxRect(viewport[0], viewport[1], viewport[2], viewport[3]);
}

namespace {

std::vector<double> CurrentMatrix(GLenum which) {
  std::vector<double> matrix(16, 0.0);
  glGetDoublev(which, matrix.data());
  return matrix;
}

}  // namespace

std::vector<double> CurrentProjection() { return CurrentMatrix(GL_PROJECTION_MATRIX); }
std::vector<double> CurrentModelView() { return CurrentMatrix(GL_MODELVIEW_MATRIX); }
