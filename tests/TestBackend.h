// A concrete back-end for testing RendererBase: records every hook and primitive call, lets a
// test choose the pixel formats it accepts, and draws nothing.
#pragma once

#include <set>
#include <string>
#include <vector>

#include <renderer/RendererBase.h>

class TestImage : public IRendererImage {
 public:
  explicit TestImage(wxSize size, int* liveCount) : m_size(size), m_live(liveCount) {
    if (m_live) ++*m_live;
  }
  ~TestImage() override {
    if (m_live) --*m_live;
  }
  bool IsOk() const override { return true; }
  wxSize GetSize() const override { return m_size; }

 private:
  wxSize m_size;
  int* m_live;
};

struct DrawCall {
  std::string op;
  wxString text;
  wxColour colour;
  wxColour background;
  wxRect rect;
  int alignment = 0;
  int width = 0;
  bool scale = false;
};

class TestBackend : public RendererBase {
 public:
  explicit TestBackend(wxWindow* parent) : RendererBase(parent) {}

  // Choices a test makes.
  std::set<int> supportedFormats;
  bool requiresDC = false;
  bool multiLine = false;
  int* liveImages = nullptr;  // counts images alive; outlives the back-end

  // What happened.
  std::vector<std::string> hooks;
  std::vector<DrawCall> draws;
  int measureCalls = 0;

  bool IsPixelFormatSupported(int format) override { return supportedFormats.count(format) > 0; }
  bool RequiresDC() override { return requiresDC; }
  bool IsMultiLineDrawLabelSupported() override { return multiLine; }

  wxSize MeasureText(const wxString& text, wxFont font) override {
    ++measureCalls;
    return RendererBase::MeasureText(text, font);
  }

  void OnInit() override { hooks.push_back("OnInit"); }
  void OnBeforeDraw(wxDC*) override { hooks.push_back("OnBeforeDraw"); }
  void DrawFrame(wxDC*) override { hooks.push_back("DrawFrame"); }
  void DrawOverlays(wxDC* dc) override {
    hooks.push_back("DrawOverlays");
    RendererBase::DrawOverlays(dc);
  }
  void OnAfterDraw(wxDC*) override { hooks.push_back("OnAfterDraw"); }
  void OnFrame() override { hooks.push_back("OnFrame"); }

  void DoDrawLabel(wxDC*, const wxString& text, wxFont, wxColour colour, wxRect rect, int alignment,
                   bool scale, wxColour background) override {
    draws.push_back(DrawCall{"label", text, colour, background, rect, alignment, 0, scale});
  }
  void DoDrawRect(wxDC*, wxRect rect, wxColour colour) override {
    draws.push_back(DrawCall{"rect", "", colour, wxNullColour, rect, 0, 0});
  }
  void DoDrawRectOutline(wxDC*, wxRect rect, wxColour colour, int width) override {
    draws.push_back(DrawCall{"outline", "", colour, wxNullColour, rect, 0, width});
  }
  void DoDrawLine(wxDC*, wxPoint from, wxPoint to, wxColour colour, int width) override {
    draws.push_back(DrawCall{"line", "", colour, wxNullColour, wxRect(from, to), 0, width});
  }
  IRendererImage* DoCreateImage(const wxImage& image) override {
    if (!image.IsOk()) return nullptr;
    return new TestImage(image.GetSize(), liveImages);
  }
  void DrawImage(wxDC*, IRendererImage*, int, int) override { hooks.push_back("DrawImage"); }
  void DrawBitmap(wxDC*, wxBitmap, int, int) override { hooks.push_back("DrawBitmap"); }

  // Protected state and helpers, opened for the tests.
  using RendererBase::CancelFrameBuffer;
  using RendererBase::CopyBitmap;
  using RendererBase::CopyImage;
  using RendererBase::m_frameBuffer;
  using RendererBase::m_height;
  using RendererBase::m_images;
  using RendererBase::m_initialised;
  using RendererBase::m_normalPtz;
  using RendererBase::m_pixelFormat;
  using RendererBase::m_renderClientHeight;
  using RendererBase::m_renderClientWidth;
  using RendererBase::m_renderedPixelFormat;
  using RendererBase::m_width;
  using RendererBase::ReduceBuffer;
  using RendererBase::ResizeBuffer;
};
