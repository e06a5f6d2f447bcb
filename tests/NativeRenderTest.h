// Shared ground of the software and video-output back-end suites: a tile with a known
// background, frames of known content loaded the way a host loads them, paints into a memory
// bitmap read back as an image, an overlay callback made of a lambda, and a model of
// nearest-neighbour placement to build the pictures a paint must produce.
#pragma once

#include <functional>
#include <vector>

#include <renderer/NativeRenderer.h>

#include "PixelCompare.h"
#include "WxTest.h"

// Cairo rounds premultiplied blends by a step or so.
constexpr int kBlendTolerance = 2;

// Runs a lambda as the host's overlay callback and counts the calls, with and without a
// device context.
class OverlayScript : public IRendererDrawOverlays {
 public:
  using Script = std::function<void(IRenderer* renderer, wxDC* dc)>;

  explicit OverlayScript(Script script = {}) : m_script(std::move(script)) {}
  void SetScript(Script script) { m_script = std::move(script); }

  void RendererDrawOverlays(IRenderer* renderer, wxDC* dc) override {
    ++calls;
    if (dc) ++callsWithDC;
    if (m_script) m_script(renderer, dc);
  }

  int calls = 0;
  int callsWithDC = 0;

 private:
  Script m_script;
};

// NativeRenderer with its protected parts opened, counting frame draws and remembering which
// bitmap (by its shared data) every blit drew.
class NativeProbe : public NativeRenderer {
 public:
  using NativeRenderer::CopyRawRows;
  using NativeRenderer::m_bitmap;
  using NativeRenderer::m_frameBuffer;
  using NativeRenderer::m_height;
  using NativeRenderer::m_images;
  using NativeRenderer::m_width;
  using NativeRenderer::NativeRenderer;
  using NativeRenderer::OutlinePath;

  void DrawFrame(wxDC* dc) override {
    ++frameDraws;
    NativeRenderer::DrawFrame(dc);
  }
  void DoDrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) override {
    blits.push_back(bitmap.GetRefData());
    NativeRenderer::DoDrawBitmap(dc, bitmap, x, y);
  }

  int frameDraws = 0;
  std::vector<const wxObjectRefData*> blits;
};

class NativeRenderTest : public WxTest {
 protected:
  static const wxColour kBackground;

  void SetUp() override;

  // A picture of `columns` x `rows` blocks of `block` x `block` pixels, each block its own
  // colour (none of them the background).
  static wxImage BlockPicture(int columns, int rows, int block);

  // Lends the renderer's frame buffer, fills it with `picture` row by row and commits it.
  static void LoadFrame(IRenderer& renderer, const wxImage& picture);

  // Paints the renderer into a fresh 24-bit bitmap of `size` (white before the paint) and
  // reads it back.
  static wxImage Paint(IRenderer& renderer, const wxSize& size);

  // The background-filled picture of `size` with `source` of `picture` placed into
  // `destination` by nearest-neighbour sampling.
  static wxImage Placed(const wxSize& size, const wxImage& picture, const wxRect& source,
                        const wxRect& destination);

  // The smallest rectangle holding every pixel that is not the background.
  static wxRect InkBounds(const wxImage& image);

  // The expected blend of `colour` over `under` at `alpha`.
  static wxColour Blend(const wxColour& colour, const wxColour& under, int alpha);

  wxWindow* tile = nullptr;
};
