// OpenGLRenderer: the back-end that paints a tile through OpenGL.
//
// The first renderer of the process probes what the GL implementation can do, records it in
// the class-wide flags and writes the capability report into the renderer-description
// registry. Every renderer draws into its own InternalGLCanvas covering the parent window,
// through a context that shares objects with the first one (or, in shared-context mode,
// through the one context of the process); the first canvas and context live until the last
// renderer goes. A paint clears the canvas to the parent's background colour and draws the
// overlays (filled rectangles, outlines and lines, alpha-blended) in pixel coordinates with
// the origin at the top left.
//
// Labels are drawn from glyph-atlas fonts (wxGLFont) kept in a two-level cache: one glyph
// font per distinct font for the whole process, shared by every renderer (their contexts share
// textures), and per renderer the fonts used in its latest overlay pass; a font a renderer
// skips for a whole pass loses that renderer's reference, and a glyph font goes when its last
// holder lets go. Text is one line per call (RendererBase splits multi-line labels).
//
// What it deliberately does not do yet: frames are neither uploaded nor drawn (no texture set
// is ever made, so DrawFrame leaves the cleared background), and images are not made or drawn
// (DoCreateImage returns null; DrawImage and DrawBitmap draw nothing).
//
// GL state policy. Each renderer keeps two pieces of GL state across calls and trusts its
// records of them: the viewport and the projection, changed only through UpdateViewport and
// UpdateOrtho, so nothing else may touch them; the matrix mode is left at GL_MODELVIEW with an
// identity model-view matrix. A draw call may leave the current colour, the line width and
// the clear colour changed; everything else it changes (blending, texturing, bound textures,
// programs, buffers, the matrix mode) it restores before it returns. Depth test and lighting
// are off from the first draw on.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include <renderer/EventBinding.h>
#include <renderer/RendererBase.h>
#include <wx/event.h>

class GLEntryPoints;
class InternalGLCanvas;
class wxGLContext;
class wxGLFont;

// One entry of a font cache. In the process-wide list it owns its glyph font and counts its
// holders; in a renderer's list the glyph font is borrowed from the process-wide entry and the
// count is the number of uses since the start of the current overlay pass. Two fonts are the
// same font exactly when their native descriptions are equal.
struct FontReference {
  wxFont* font;  // owned copy
  wxGLFont* glFont;
  int refCount;
  wxString description;
};

// Whether `name` is a whole token of the current context's extension string. The string is
// read once per process, at the first call; when no context is current then, every call
// answers false for the rest of the process.
bool IsExtensionSupported(const char* name);
// Whether `name` is a whole token of the space-separated `list`.
bool IsExtensionSupported(const char* list, const char* name);
// The window-system layer's extension matcher. It never reads a list: always false.
bool IsGLXExtensionSupported(const char* name);

class OpenGLRenderer : public wxEvtHandler, public RendererBase {
 public:
  explicit OpenGLRenderer(wxWindow* parent);
  ~OpenGLRenderer() override;

  // Creates this renderer's canvas on the parent and its context, and returns the canvas.
  virtual InternalGLCanvas* CreateCanvas();

  // Makes this renderer's context current on its canvas; a hidden canvas is never made current.
  void SetCurrent();
  // With `check`, whether the canvas is shown; without, always true.
  bool IsContextReady(bool check);
  bool HasContext();

  void OnSize(wxSizeEvent& event);
  void UpdateViewport(wxRect rect);
  void UpdateOrtho(wxRect rect);
  void SwapBuffers();
  void InitGL();
  void EnableVSync(bool enable);

  // IRenderer and RendererBase.
  bool ClearFrame() override;
  void DrawImage(wxDC* dc, IRendererImage* image, int x, int y) override;
  void DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) override;
  bool GetIsSupported() override;
  void DrawFrame(wxDC* dc) override;
  void DrawOverlays(wxDC* dc) override;
  wxSize MeasureText(const wxString& text, wxFont font) override;
  void DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour, wxRect rect,
                   int alignment, bool scale, wxColour background) override;
  void DoDrawRect(wxDC* dc, wxRect rect, wxColour colour) override;
  void DoDrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) override;
  void DoDrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) override;
  IRendererImage* DoCreateImage(const wxImage& image) override;
  void OnBeforeDraw(wxDC* dc) override;
  void OnAfterDraw(wxDC* dc) override;

  // The capability probe, run once per process by the first renderer. Always 0.
  static int StaticInit(OpenGLRenderer* renderer);

  // Process-wide state: the probe's findings and the share partners of every context.
  static bool m_isSharedContext;
  static InternalGLCanvas* m_sharedCanvas;
  static wxGLContext* m_sharedContext;
  static bool m_isBgrSupported;
  static bool m_isPixelBufferSupported;
  static bool m_isNonPow2Supported;
  static bool m_isShaderSupported;
  static bool m_isTextRectSupported;
  static bool m_isSupported;
  static bool m_isRecommended;
  static wxSize m_maxTextureSize;
  static wxRect m_sharedViewport;
  static std::vector<FontReference*> m_sharedFonts;

  // Overlay fonts. The glyph font for `font` in this renderer's list, counting one more use;
  // made (and taken from the process-wide list) on first use.
  wxGLFont* GetOverlayFont(wxFont font);
  // The process-wide glyph font for `font`, counting one more holder; made on first use.
  wxGLFont* CreateGLFont(wxFont font);
  // Lets go of one hold on a glyph font; the last holder's release deletes it.
  void ReleaseGLFont(wxGLFont* glFont);
  // Makes `glFont` the font inside its Begin/End bracket, ending the previous one's.
  void SetActiveOverlayFont(wxGLFont* glFont);
  // Start of an overlay pass: no font of this renderer has been used yet.
  void ResetOverlayFonts();
  // End of an overlay pass: releases the fonts this renderer did not use in it.
  void CleanupOverlayFonts();
  static FontReference* GetFontReference(std::vector<FontReference*>& fonts, wxFont font);
  static void RemoveFontReference(std::vector<FontReference*>& fonts, wxFont font);
  static wxGLFont* UseFont(std::vector<FontReference*>& fonts, const wxFont& font,
                           const std::function<wxGLFont*()>& make);

 protected:
  // What the probe asks of the GL implementation: the real answers come from the current
  // context, tests hand in others.
  struct DriverQueries {
    std::function<bool(const char* name)> hasExtension;
    std::function<bool(int side)> acceptsSquareTexture;  // a side x side RGBA texture
    std::function<wxString(unsigned int name)> string;   // GL_RENDERER, GL_VENDOR, GL_VERSION
    const GLEntryPoints* entryPoints;
  };

  // The probe's algorithm on the given answers.
  static int Probe(OpenGLRenderer* renderer, const DriverQueries& driver);
  // Sets the extension flags; an extension whose functions are missing counts as absent.
  static void DetectExtensions(const DriverQueries& driver);
  // Doubles a square side from 256 while the driver accepts it; `previous` when 256 fails.
  static wxSize FindMaxTextureSize(const std::function<bool(int side)>& accepts, wxSize previous);
  // Whether a GL_RENDERER string names an implementation that may be chosen automatically.
  static bool IsRecommendedRenderer(const wxString& renderer);

  // Replaces this renderer's context and canvas with new ones, the context becoming the new
  // share partner of the process; the hook for a driver that needs a context per renderer.
  void SwitchToMultipleContexts();
  // Deletes the renderer's textures, pixel buffers and programs (the context must be current).
  void DeleteTextures();

  bool m_isGLInitialized;      // InitGL has run
  InternalGLCanvas* m_canvas;  // null when GL was unsupported at construction
  wxGLContext* m_context;      // may be m_sharedContext, which this renderer does not own
  bool m_isDoubleBuffered;     // never cleared: SwapBuffers swaps rather than flushes
  wxRect m_viewport;           // last rectangle given to glViewport
  wxRect m_ortho;              // last rectangle given to the projection
  // The frame's GL objects (one texture and pixel buffer per plane, the YUV programs), made by
  // the frame upload and deleted together by DeleteTextures.
  std::vector<unsigned int> m_textures;
  std::vector<unsigned int> m_pixelBuffers;
  std::vector<unsigned int> m_programs;
  std::map<unsigned int, unsigned int> m_textureTargets;  // texture name to its target
  // Fonts used in this renderer's overlay passes, and the one inside its bracket now.
  std::vector<FontReference*> m_overlayFonts;
  wxGLFont* m_activeOverlayFont;

 private:
  // Appends the capability lines for the flags and the given driver strings.
  static void AppendCapabilities(const wxString& vendor, const wxString& renderer,
                                 const wxString& version);
  static void SetColour(const wxColour& colour);
  void MirrorParentToolTip();
  void ClearToParentBackground();
  // Hides and detaches the shared canvas (kept for reuse), destroys any other.
  void ReleaseCanvas();

  std::unique_ptr<EventBinding<wxSizeEvent, OpenGLRenderer>> m_parentSize;

  wxDECLARE_EVENT_TABLE();
};
