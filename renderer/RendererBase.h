// RendererBase: the state and behaviour every back-end shares.
//
// Holds the frame buffer and the description of the current frame, the geometry (aspect
// ratio, destination rectangle, render client size, digital PTZ), the paint sequence, the
// images made through it, the overlay drawing front (opacity, multi-line labels, text layout)
// and the process-wide registry of renderer descriptions. It draws nothing itself: back-ends
// supply DrawFrame and the Do* primitives and override the hooks.
#pragma once

#include <functional>
#include <list>
#include <vector>

#include <decompressor/CDigitalPTZType.h>
#include <decompressor/CPixelLayout.h>
#include <decompressor/NormalDigitalPTZ.h>
#include <renderer/IRenderer.h>

class RendererBase : public IRenderer {
 public:
  // The largest width or height of a frame laid out in main memory: the decoder's own limit,
  // which holds 8K video. A larger request fails instead of asking for gigabytes.
  static constexpr int kMaxMemoryFrameSide = CPixelLayout::kMaxDimension;

  explicit RendererBase(wxWindow* parent);
  ~RendererBase() override;
  RendererBase(const RendererBase&) = delete;
  RendererBase& operator=(const RendererBase&) = delete;

  // IRenderer, in its order.
  wxWindow* GetParent() const override;
  bool RequiresDC() override;
  bool IsModeSupported(int width, int height, int format) override;
  bool IsPixelFormatSupported(int format) override;
  bool IsHardwareDecompSupported() override;
  int GetPreferredPixelFormat(int format) override;
  int GetPixelFormat() override;
  bool ClearFrame() override;
  bool HasFrame() override;
  void SetVideoOutput(IVideoOutput* output) override;
  IVideoOutput* GetVideoOutput() override;
  bool BeginHardwareImage(int width, int height, int format, HardwareImageInfo& info) override;
  void EndHardwareImage(HardwareImageInfo& info) override;
  bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                      int* pitches) override;
  bool GetFrameBuffer(int width, int height, int format, unsigned char* buffer, int pitch) override;
  bool FlushFrameBuffer(unsigned char** planes, int* pitches) override;
  bool FlushFrameBuffer(unsigned char* buffer, int pitch) override;
  void SetIgnoreAspectRatio(bool ignore) override;
  bool GetIgnoreAspectRatio() override;
  void SetAspectRatio(float ratio) override;
  float GetAspectRatio() override;
  float GetCurrentAspectRatio() override;
  void ResetAspectRatio() override;
  wxSize GetVideoSize() override;
  void SetVideoSize(wxSize size) override;
  NormalDigitalPTZ* GetNormalPtz() override;
  CDigitalPTZ* GetPtz() override;
  CDigitalPTZType& GetPtzType() override;
  void SetDestinationRect(wxRect rect) override;
  wxRect GetDestinationRect() override;
  void ResetDestinationRect() override;
  wxSize GetRenderClientSize() override;
  void GetRenderClientSize(int& width, int& height) override;
  void GetSubImageRect(wxRect& destination, wxRect& source, bool force) override;
  void GetSubImageRect(int width, int height, wxRect& destination, wxRect& source,
                       bool force) override;
  wxRect GetAdjustedPtzSourceRect() override;
  void Render(wxDC* dc) override;
  wxSize MeasureText(const wxString& text, wxFont font) override;
  int GetLineHeight(wxFont font) override;
  IRendererImage* CreateImage(const wxImage& image) override;
  void DeleteImage(IRendererImage* image) override;
  void DrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour, wxRect rect,
                 int alignment, bool scale, wxColour background) override;
  void DrawRect(wxDC* dc, wxRect rect, wxColour colour) override;
  void DrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) override;
  void DrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) override;
  void SetDrawOverlaysHandler(IRendererDrawOverlays* handler) override;
  unsigned char GetOpacity() const override;
  void SetOpacity(unsigned char opacity) override;

  // Back-end hooks and primitives, in this order after IRenderer's.
  virtual bool GetIsSupported();
  virtual bool IsMultiLineDrawLabelSupported();
  virtual void CopySettings(RendererBase* target);
  virtual void DrawFrame(wxDC* dc) = 0;
  virtual void DrawOverlays(wxDC* dc);
  virtual void DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour,
                           wxRect rect, int alignment, bool scale, wxColour background) = 0;
  virtual void DoDrawRect(wxDC* dc, wxRect rect, wxColour colour) = 0;
  virtual void DoDrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) = 0;
  virtual void DoDrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) = 0;
  virtual wxFont GetScaledFont(wxFont font, const wxString& text, wxPoint origin);
  virtual IRendererImage* DoCreateImage(const wxImage& image) = 0;
  virtual void OnBeforeDraw(wxDC* dc);
  virtual void OnAfterDraw(wxDC* dc);
  virtual void OnInit();
  virtual void OnFrame();

  // Text layout.
  wxPoint GetTextLocation(wxFont font, const wxString& text, wxRect rect, int alignment);
  static int OsdPosToAlignment(int position);

  // `font` at the largest point size, from its own down to 1, at which the extent `measure`
  // gives fits `client` from `origin`; a font of 1 point or less, or an invalid one, comes
  // back as it is. The shared search of the back-ends' GetScaledFont.
  static wxFont FitFont(wxFont font, wxPoint origin, wxSize client,
                        const std::function<wxSize(const wxFont&)>& measure);

  // Colour helpers. An invalid colour (wxNullColour) comes back unchanged.
  static wxColour ChangeAlpha(const wxColour& colour, const unsigned char& alpha);
  static wxColour AdjustAlpha(const wxColour& colour, const unsigned char& opacity);

  static wxRect NormalizeRect(wxRect rect);

  // `value` limited to the int range. Geometry a host gives may lie near the int limits; sums
  // and differences of it are taken in a wider type and clamped rather than overflowed.
  static int ClampToInt(long long value);

  // Registry of human-readable renderer descriptions, one text per mode, process-wide.
  static void AppendRendererDesc(RenderMode mode, const wxString& text);
  static wxString& GetRendererDesc(RenderMode mode);
  static void ClearRendererDesc(RenderMode mode);

 protected:
  // Frame-buffer storage. ResizeBuffer keeps the capacity when shrinking, so a stream of
  // equal frames allocates nothing; ReduceBuffer gives the memory back.
  void ResizeBuffer(unsigned long size);
  void ReduceBuffer(unsigned long size);

  // Lends the frame buffer with the planes of `format` one after the other at their packed
  // pitches. Fails without changing anything for a frame that cannot be laid out (a side
  // below 1 or beyond kMaxMemoryFrameSide, a format outside the table), for a format the
  // back-end does not take, and when the memory cannot be had.
  bool GetMemoryFrameBuffer(int width, int height, int format, unsigned char** planes,
                            int* pitches);

  // Deletes every image made through CreateImage. The destructor does it last of all; a
  // back-end whose images need its context alive calls it earlier.
  void DeleteImages();

  // Abandons a lent frame buffer without committing it: the planes and pitches are zeroed and
  // the current frame (if any) stays.
  void CancelFrameBuffer(unsigned char** planes, int* pitches);

  // Writes an image as 32-bit pixels (R, G, B, alpha or 255), rows `pitch` bytes apart. With
  // `flag` set, bytes 0 and 2 are taken from source indices 1 and 3 (the latter being the
  // next pixel's first byte); the library itself always passes false.
  static void CopyImage(const wxImage& image, unsigned char* destination, int pitch, bool flag);
  static void CopyBitmap(wxBitmap bitmap, unsigned char* destination, int pitch, bool flag);

  std::vector<unsigned char> m_frameBuffer;
  int m_width;
  int m_height;
  int m_pixelFormat;
  int m_renderedPixelFormat;
  NormalDigitalPTZ m_normalPtz;
  CDigitalPTZType m_ptzType;
  int m_renderClientWidth;
  int m_renderClientHeight;
  wxRect m_destinationRect;
  bool m_hasFrame;
  unsigned char m_opacity;
  IRendererDrawOverlays* m_drawOverlaysHandler;
  wxWindow* m_parent;
  bool m_initialised;
  std::list<IRendererImage*> m_images;

 private:
  // The lines of a label aligned to the bottom or the vertical centre, stacked as one block.
  void DrawLinesAsABlock(wxDC* dc, const wxArrayString& lines, const wxFont& font,
                         const wxColour& textColour, const wxRect& rect, int alignment, bool scale,
                         const wxColour& background);
};
