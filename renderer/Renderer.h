// Renderer: the one object through which a host draws video into a tile window.
//
// It owns the active back-end (NativeRenderer, OpenGLRenderer or VideoOutRenderer), picks it
// from the requested RenderMode and what the machine supports, forwards every IRenderer
// operation to it, and relays the back-end's overlay callback to the host. Per frame it
// negotiates the size and pixel format the decoder is to deliver, scales very small views on
// the processor, and moves the frame by the decoder's video output, the hardware hand-over or
// a lent frame buffer. When the hardware back-end refuses a frame it puts a software back-end
// in front of it until the frame's parameters change in its favour. Host images are kept as
// RendererImage and re-created on each back-end the first time they are drawn there.
//
// What it deliberately does not do: draw anything itself, report errors other than by its
// results and verbose log lines, or take a lock (every call belongs on the GUI thread, since a
// switch creates and deletes windows and GL contexts).
#pragma once

#include <map>
#include <vector>

#include <renderer/IRenderer.h>
#include <wx/object.h>

class CDecompressor;
class RendererBase;

// A host image as the facade keeps it: the source picture, and per back-end that has drawn it
// that back-end's own image (null until the first draw there).
class RendererImage : public IRendererImage {
 public:
  explicit RendererImage(const wxImage& image);
  // Releases every back-end's own image through that back-end's DeleteImage.
  ~RendererImage() override;
  RendererImage(const RendererImage&) = delete;
  RendererImage& operator=(const RendererImage&) = delete;

  bool IsOk() const override;
  wxSize GetSize() const override;

  wxSize m_size;
  wxImage m_image;
  std::map<IRenderer*, IRendererImage*> m_backendImages;
};

// A back-end wrapped for the toolkit's deferred destruction, which takes only wxObjects.
class RendererObject : public wxObject {
 public:
  explicit RendererObject(IRenderer* object);
  ~RendererObject() override;
  RendererObject(const RendererObject&) = delete;
  RendererObject& operator=(const RendererObject&) = delete;

  IRenderer* m_object;  // owned
};

class Renderer : public IRenderer, public IRendererDrawOverlays {
 public:
  Renderer(wxWindow* parent, RenderMode mode);
  ~Renderer() override;
  Renderer(const Renderer&) = delete;
  Renderer& operator=(const Renderer&) = delete;

  // ---- Back-end selection ----

  // Replaces the back-end with one for `mode` (the old one is deleted at the next idle time,
  // so a paint still running on it completes). Always true: a host that needs to know whether
  // the mode is available asks IsRenderModeSupported first.
  bool SetRenderMode(RenderMode mode);
  // A new back-end for `mode`, from the first candidate the machine supports; records its
  // mode in m_primaryMode. Touches neither the active nor the primary back-end.
  IRenderer* CreateRenderer(RenderMode mode);
  static bool IsRenderModeSupported(RenderMode mode);
  static wxString GetRendererDesc(RenderMode mode);

  // ---- Frame pipeline ----

  // Agrees on the size and format the decoder is to deliver and the source rectangle to crop
  // (all in-out), scales small views in software and enters or leaves the software fallback.
  // `decoder` and `ptz` may be null. Returns whether the facade is in software fallback.
  bool NegotiateFormat(int& width, int& height, int& format, wxRect& srcRect,
                       CDecompressor* decoder, CDigitalPTZ* ptz);
  // Moves the decoder's latest picture into the active back-end with the negotiated values;
  // whether a frame was delivered. A nested call (from any facade) returns false at once.
  bool CopyFrame(CDecompressor& decoder, int width, int height, int format, wxRect srcRect,
                 CDigitalPTZ* ptz);
  void UpdateLastFormat(int width, int height, int format, bool& hardware, bool& changed);
  bool ShouldSoftwareScale(int srcWidth, int srcHeight, int dstWidth, int dstHeight);

  // ---- Software fallback ----

  bool IsInSoftwareFallback();
  void SoftwareFallback(bool toSoftware);
  void ForceSoftwareMode(bool on);
  bool CheckForFallback();
  bool CheckModeForFallback(int width, int height, int& format);

  // ---- Images and aspect ratio ----

  // Releases `renderer`'s own image of every host image, calling its DeleteImage with null
  // for images never drawn there, and forgets them.
  void DeleteImages(IRenderer* renderer);
  // A display aspect ratio (width part, height part) chosen from measured `ratios`.
  static wxSize DetermineAspectRatio(const std::vector<float>& ratios, bool preferWide, int mode);

  // ---- IRendererDrawOverlays: relays a back-end's overlay pass to the host ----

  void RendererDrawOverlays(IRenderer* renderer, wxDC* dc) override;

  // ---- IRenderer, in its order ----

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
  // A failed request of a frame of non-zero size switches to software; this frame is dropped.
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
  // A RendererImage; no back-end is asked until the image is drawn.
  IRendererImage* CreateImage(const wxImage& image) override;
  // Deletes an image made by this facade; any other pointer is ignored.
  void DeleteImage(IRendererImage* image) override;
  void DrawImage(wxDC* dc, IRendererImage* image, int x, int y) override;
  void DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) override;
  void DrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour, wxRect rect,
                 int alignment, bool scale, wxColour background) override;
  void DrawRect(wxDC* dc, wxRect rect, wxColour colour) override;
  void DrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) override;
  void DrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) override;
  // Keeps the host's handler; the back-ends keep the facade as theirs.
  void SetDrawOverlaysHandler(IRendererDrawOverlays* handler) override;
  unsigned char GetOpacity() const override;
  void SetOpacity(unsigned char opacity) override;

 protected:
  IRenderer* m_renderer;
  IRenderer* m_primaryRenderer;
  wxWindow* m_parent;
  RenderMode m_renderMode;
  int m_primaryMode;
  int m_lastWidth;
  int m_lastHeight;
  int m_lastFormat;
  bool m_lastHardware;
  IRendererDrawOverlays* m_drawOverlaysHandler;
  int m_maxHardwareWidth;
  int m_maxHardwareHeight;
  float m_softwareScaleThreshold;
  std::vector<RendererImage*> m_images;

 private:
  // Whether a host PTZ is engaged: set, in use and switched on.
  static bool IsPtzEngaged(CDigitalPTZ* ptz);
  // Whether a frame of this size is within the hardware size limit (none while it is 0).
  bool IsWithinHardwareLimit(int width, int height) const;
  // The settings of `from` passed to `to`; both must be back-ends of this facade.
  static void CopySettings(IRenderer* from, IRenderer* to);
  // The decoder presents the picture itself; false when there is no video output to take.
  bool PresentThroughVideoOutput(CDecompressor& decoder, int width, int height, int format,
                                 const wxRect& srcRect, CDigitalPTZ* ptz);
  // The decoder writes its hardware picture into the back-end; false when that road is closed
  // (`delivered` then untouched), true with `delivered` set when it was taken.
  bool CopyThroughHardwareImage(CDecompressor& decoder, int width, int height, int format,
                                const wxRect& srcRect, CDigitalPTZ* ptz, bool& delivered);
  bool CopyThroughFrameBuffer(CDecompressor& decoder, int width, int height, int format,
                              const wxRect& srcRect, CDigitalPTZ* ptz);
  // Shows (or hides) every child window of the parent.
  void ShowChildren(bool show);
  // Hands a replaced back-end to the toolkit's idle-time destruction.
  static void ScheduleDeletion(IRenderer* renderer);
};
