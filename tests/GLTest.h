// The fixture of the GL suites: a shown frame with one tile, renderers that the fixture
// destroys before the windows go, and helpers to paint them and look at GL state.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "GLTestRenderer.h"
#include "PixelCompare.h"
#include "WxTest.h"

class InternalGLCanvas;

// An overlay callback made of a function.
class OverlayFunction : public IRendererDrawOverlays {
 public:
  explicit OverlayFunction(std::function<void(IRenderer*, wxDC*)> draw) : m_draw(std::move(draw)) {}
  void RendererDrawOverlays(IRenderer* renderer, wxDC* dc) override { m_draw(renderer, dc); }

 private:
  std::function<void(IRenderer*, wxDC*)> m_draw;
};

class GLTest : public WxTest {
 protected:
  static constexpr int kTileWidth = 200;
  static constexpr int kTileHeight = 150;
  static const wxColour kTileColour;

  void SetUp() override;
  void TearDown() override;

  // A renderer on `parent` (the tile by default), owned by the fixture, whose canvas has been
  // painted by the toolkit once, so its window exists at its final size.
  GLTestRenderer* MakeRenderer(wxWindow* parent = nullptr);
  // Waits until the toolkit has painted the renderer's canvas once, at its final size.
  void Settle(GLTestRenderer* renderer);
  // Destroys a renderer made by MakeRenderer.
  void DestroyRenderer(GLTestRenderer* renderer);

  // Paints `renderer` without a device context and returns what it drew.
  wxImage Paint(GLTestRenderer* renderer);

  // The tile filled with its background colour: the starting point of expected pictures.
  wxImage BackgroundImage() const;

  // Moves the frame to where the suites that read the screen show theirs, out of the way of
  // the other suites' frames at the top left, and waits until it is there.
  ::testing::AssertionResult MoveToScreenPlace();

  wxWindow* tile = nullptr;
  std::vector<std::unique_ptr<GLTestRenderer>> renderers;
};

// Waits until `canvas` (of `renderer`) has its window at its final size, and swaps once so
// Mesa's software rasteriser draws the next frame at that size.
void SettleCanvas(OpenGLRenderer* renderer, InternalGLCanvas* canvas);

// Whether the canvas's X window exists and has `size`.
bool WindowHasSize(InternalGLCanvas* canvas, const wxSize& size);

// What the X server holds in `rect` of an X drawable (a window or pixmap id).
wxImage ReadDrawable(unsigned long drawable, const wxRect& rect);

// What the X server shows in `rect` (screen coordinates), read from the root window: every
// window in it as it appears, GL canvases included.
wxImage ReadScreen(const wxRect& rect);

// What the X server shows in the canvas's window, the whole client area, read through the
// toolkit's display connection (the one GL swaps through, so every swap made is seen). Only
// meaningful while no other window covers the canvas.
wxImage ReadWindow(InternalGLCanvas* canvas);

// The sequence number the next request to the X server on the toolkit's display will carry:
// unchanged between two calls when nothing was asked of the server in between.
unsigned long NextXRequest();

// The current context as the window system knows it (null when none is current).
const void* CurrentContext();
// The drawable (X window) the current context draws into, 0 when none is current.
unsigned long CurrentDrawable();
// Leaves the calling thread with no context current.
void ReleaseCurrentContext();

// Whether `name` is an ARB program of the current context (the function is an extension
// that only the window system hands out).
bool IsProgramName(unsigned int name);

// GL state of the current context.
wxRect CurrentViewport();
std::vector<double> CurrentProjection();
std::vector<double> CurrentModelView();
