// The vocabulary every part of the renderer speaks: render modes, pixel-format codes, the
// hardware-image record, and the three interfaces between host and renderer.
//
// The facade `Renderer` and every back-end implement IRenderer; hosts talk only to it. The
// declaration order of IRenderer's operations is part of the calling interface to the host
// and must not change. This header holds declarations only; behaviour lives in RendererBase
// and the back-ends.
#pragma once

#include <cstdint>

#include <decompressor/PixelFormat.h>
#include <wx/bitmap.h>
#include <wx/colour.h>
#include <wx/font.h>
#include <wx/gdicmn.h>
#include <wx/image.h>
#include <wx/string.h>

class wxDC;
class wxWindow;
class IVideoOutput;
class CDigitalPTZ;
class CDigitalPTZType;
class NormalDigitalPTZ;

// Selects a back-end. Stored and passed as a 32-bit signed integer; values below 0 or above
// 3 are unsupported modes.
enum RenderMode : std::int32_t {
  RENDER_MODE_AUTO = 0,      // the facade tries RESERVED, OPENGL, SOFTWARE in this order
  RENDER_MODE_SOFTWARE = 1,  // device-context drawing, or the decoder's own video output
  RENDER_MODE_OPENGL = 2,    // OpenGL, when the decoder has no video output and GL is usable
  RENDER_MODE_RESERVED = 3,  // heads the automatic order but has no back-end: never supported
};

// Pixel-format preference lists used by GetPreferredPixelFormat.
constexpr int kRgbFallbackFormats[] = {PIXEL_FORMAT_RGB24, PIXEL_FORMAT_BGR24, PIXEL_FORMAT_RGBA32};
constexpr int kPreferredFormats[] = {PIXEL_FORMAT_I420,  PIXEL_FORMAT_YV12,  PIXEL_FORMAT_YUV422P,
                                     PIXEL_FORMAT_NV12,  PIXEL_FORMAT_YUYV,  PIXEL_FORMAT_UYVY,
                                     PIXEL_FORMAT_RGB24, PIXEL_FORMAT_BGR24, PIXEL_FORMAT_RGBA32};

// A frame that the hardware decoder renders straight into a back-end's texture. The facade
// zero-fills it and sets the source rectangle; the decoder reads it in CopyToHardwareImage.
struct HardwareImageInfo {
  int srcX;
  int srcY;
  int srcWidth;
  int srcHeight;
  void* decoderContext;  // the decoder's own: never touched by a renderer
  int width;             // image size, written by the back-end
  int height;
  std::uint32_t surface;  // platform surface value of the texture (for GL: its target)
  std::uint32_t texture;  // GL texture name
};

// An image made by one renderer for repeated drawing (a logo, an icon, a marker).
class IRendererImage {
 public:
  virtual bool IsOk() const = 0;
  virtual wxSize GetSize() const = 0;
  virtual ~IRendererImage() = default;
};

class IRenderer;

// The host's overlay callback: runs once per paint between the frame and the end of drawing,
// and draws through `renderer`'s drawing operations.
class IRendererDrawOverlays {
 public:
  virtual ~IRendererDrawOverlays() = default;
  virtual void RendererDrawOverlays(IRenderer* renderer, wxDC* dc) = 0;
};

class IRenderer {
 public:
  virtual ~IRenderer() = default;

  virtual wxWindow* GetParent() const = 0;
  virtual bool RequiresDC() = 0;
  virtual bool IsModeSupported(int width, int height, int format) = 0;
  virtual bool IsPixelFormatSupported(int format) = 0;
  virtual bool IsHardwareDecompSupported() = 0;
  virtual int GetPreferredPixelFormat(int format) = 0;
  virtual int GetPixelFormat() = 0;
  virtual bool ClearFrame() = 0;
  virtual bool HasFrame() = 0;
  virtual void SetVideoOutput(IVideoOutput* output) = 0;
  virtual IVideoOutput* GetVideoOutput() = 0;
  virtual bool BeginHardwareImage(int width, int height, int format, HardwareImageInfo& info) = 0;
  virtual void EndHardwareImage(HardwareImageInfo& info) = 0;
  virtual bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                              int* pitches) = 0;
  virtual bool GetFrameBuffer(int width, int height, int format, unsigned char* buffer,
                              int pitch) = 0;
  virtual bool FlushFrameBuffer(unsigned char** planes, int* pitches) = 0;
  virtual bool FlushFrameBuffer(unsigned char* buffer, int pitch) = 0;
  virtual void SetIgnoreAspectRatio(bool ignore) = 0;
  virtual bool GetIgnoreAspectRatio() = 0;
  virtual void SetAspectRatio(float ratio) = 0;
  virtual float GetAspectRatio() = 0;
  virtual float GetCurrentAspectRatio() = 0;
  virtual void ResetAspectRatio() = 0;
  virtual wxSize GetVideoSize() = 0;
  virtual void SetVideoSize(wxSize size) = 0;
  virtual NormalDigitalPTZ* GetNormalPtz() = 0;
  virtual CDigitalPTZ* GetPtz() = 0;
  virtual CDigitalPTZType& GetPtzType() = 0;
  virtual void SetDestinationRect(wxRect rect) = 0;
  virtual wxRect GetDestinationRect() = 0;
  virtual void ResetDestinationRect() = 0;
  virtual wxSize GetRenderClientSize() = 0;
  virtual void GetRenderClientSize(int& width, int& height) = 0;
  virtual void GetSubImageRect(wxRect& destination, wxRect& source, bool force) = 0;
  virtual void GetSubImageRect(int width, int height, wxRect& destination, wxRect& source,
                               bool force) = 0;
  virtual wxRect GetAdjustedPtzSourceRect() = 0;
  virtual void Render(wxDC* dc) = 0;
  virtual wxSize MeasureText(const wxString& text, wxFont font) = 0;
  virtual int GetLineHeight(wxFont font) = 0;
  virtual IRendererImage* CreateImage(const wxImage& image) = 0;
  virtual void DeleteImage(IRendererImage* image) = 0;
  virtual void DrawImage(wxDC* dc, IRendererImage* image, int x, int y) = 0;
  virtual void DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) = 0;
  virtual void DrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour,
                         wxRect rect, int alignment, bool scale, wxColour background) = 0;
  virtual void DrawRect(wxDC* dc, wxRect rect, wxColour colour) = 0;
  virtual void DrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) = 0;
  virtual void DrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) = 0;
  virtual void SetDrawOverlaysHandler(IRendererDrawOverlays* handler) = 0;
  virtual unsigned char GetOpacity() const = 0;
  virtual void SetOpacity(unsigned char opacity) = 0;
};
