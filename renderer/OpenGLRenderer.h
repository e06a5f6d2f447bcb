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
// Frames arrive through GetFrameBuffer / FlushFrameBuffer: one texture per plane, sized by
// DetermineTextureSize and reused while size and format stay, written by the decoder straight
// into mapped pixel-unpack buffers where the driver has them and into the client-memory frame
// buffer otherwise. YUV frames are converted on the graphics card by the ARB fragment programs
// of FragmentPrograms.h. DrawFrame paints the visible part of the texture set as one quad into
// the destination rectangle; host images (OpenGLImage) are single RGBA textures drawn the same
// way, faded by the opacity.
//
// Labels are drawn from glyph-atlas fonts (wxGLFont) kept in a two-level cache: one glyph
// font per distinct font for the whole process, shared by every renderer (their contexts share
// textures), and per renderer the fonts used in its latest overlay pass; a font a renderer
// skips for a whole pass loses that renderer's reference, and a glyph font goes when its last
// holder lets go. Text is one line per call (RendererBase splits multi-line labels).
//
// What it deliberately does not do: convert or scale pixels on the processor (the decoder
// writes the planes in the texture layout, the card does the rest), filter other than
// GL_NEAREST, or take frames from a hardware decoder (no hardware surface is ever set, so
// BeginHardwareImage fails and the facade copies).
//
// GL state policy. Each renderer keeps two pieces of GL state across calls and trusts its
// records of them: the viewport and the projection, changed only through UpdateViewport and
// UpdateOrtho, so nothing else may touch them; the matrix mode is left at GL_MODELVIEW with an
// identity model-view matrix and texture unit 0 active. A draw call may leave the current
// colour, the line width, the clear colour, the unpack alignment and texture bindings (with
// their targets disabled) changed; everything else it changes (blending, texturing enables,
// programs, buffer bindings, the matrix mode) it restores before it returns. Depth test and
// lighting are off from the first draw on.
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
  // With `check`, whether the canvas is shown and its context could be made current; without,
  // always true.
  bool IsContextReady(bool check);
  bool HasContext();
  // Runs `release` with this renderer's context current on its canvas, shown or not, and makes
  // current again what was current before: every GL name of the renderer is deleted this way.
  void WithShareGroupCurrent(const std::function<void()>& release);

  void OnSize(wxSizeEvent& event);
  void UpdateViewport(wxRect rect);
  void UpdateOrtho(wxRect rect);
  void SwapBuffers();
  void InitGL();
  void EnableVSync(bool enable);

  // IRenderer and RendererBase.
  bool ClearFrame() override;
  bool GetIsSupported() override;
  void DrawOverlays(wxDC* dc) override;
  wxSize MeasureText(const wxString& text, wxFont font) override;
  wxFont GetScaledFont(wxFont font, const wxString& text, wxPoint origin) override;
  void DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour, wxRect rect,
                   int alignment, bool scale, wxColour background) override;
  void DoDrawRect(wxDC* dc, wxRect rect, wxColour colour) override;
  void DoDrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) override;
  void DoDrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) override;
  void OnBeforeDraw(wxDC* dc) override;
  void OnAfterDraw(wxDC* dc) override;

  // The capability probe, run once per process by the first renderer. Always 0.
  static int StaticInit(OpenGLRenderer* renderer);

  // ---- Frame upload: textures, pixel buffers and the YUV programs ----
  // All of these need a context of the renderer's share group current.

  bool IsPixelFormatSupported(int format) override;
  // False for a video beyond the largest texture, and for a tile whose client area is not
  // wholly inside every scrolled window around it.
  bool IsModeSupported(int width, int height, int format) override;
  bool IsHardwareDecompSupported() override;
  // Creates the textures, then fails: no decoder hands this renderer a hardware surface.
  bool BeginHardwareImage(int width, int height, int format, HardwareImageInfo& info) override;
  void EndHardwareImage(HardwareImageInfo& info) override;
  using RendererBase::FlushFrameBuffer;
  using RendererBase::GetFrameBuffer;
  // Lends mapped pixel buffers, or the client-memory frame buffer, laid out as the textures.
  bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                      int* pitches) override;
  // Uploads the lent planes into the textures.
  bool FlushFrameBuffer(unsigned char** planes, int* pitches) override;
  // Unmaps the pixel buffers and abandons the lent planes.
  void CancelFrameBuffer(unsigned char** planes, int* pitches);

  // GL format of plane 0 of a pixel format; 0 for a format without textures.
  unsigned int GetColorFormat(int format);
  // Packed 4:2:2 formats live in rectangle textures addressed in texels.
  bool IsRectangularFormat(int format);
  // Plane 0's texture size for a video: the width always grows by 1 to 8, and without
  // non-power-of-two support both sides round up to powers of two.
  wxSize DetermineTextureSize(int width, int height);
  // One texture (and, with pixel-buffer support, one pixel buffer of `bufferSize` bytes)
  // appended to the renderer's lists.
  bool CreateTexture(int width, int height, int internalFormat, unsigned int format, int bufferSize,
                     bool rectangular);
  // The texture set and program of the current pixel format; kept while size and format stay.
  bool CreateTextures(int width, int height, int format);
  // Deletes the renderer's textures, pixel buffers and programs (the context must be current).
  void DeleteTextures();
  // Uploads `data` into a texture, through `buffer` when it is not 0.
  void UpdateTexture(unsigned int texture, unsigned int buffer, int width, int height,
                     unsigned int format, unsigned char* data, int size);
  // Pixel buffer `index`, 0 when out of range.
  unsigned int GetPixelBufferId(unsigned long index);
  // Compiles an ARB fragment program of `length` bytes and adds it to the renderer's
  // programs. A zero must follow the text somewhere: Mesa reads up to it.
  bool LoadShader(const char* text, int length);
  // Compiles a program read from a file (at most its first 8000 bytes).
  bool LoadShader(const char* path);

  // ---- Frame and image drawing ----

  void DrawFrame(wxDC* dc) override;
  IRendererImage* DoCreateImage(const wxImage& image) override;
  void DrawImage(wxDC* dc, IRendererImage* image, int x, int y) override;
  void DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) override;
  // The video texture set's `source` rectangle (in texels) into `destination`.
  void PositionTexture(wxRect source, wxRect destination, bool rectangular);
  // The first texture, with the first program if there is one.
  void PositionTexture(float left, float top, float right, float bottom, wxRect destination);
  // One texture as one quad, faded by the opacity; a non-zero `program` asks for the
  // renderer's first program.
  void PositionTexture(unsigned int texture, unsigned int program, float left, float top,
                       float right, float bottom, wxRect destination);
  // Every texture of the set on units 0, 1, 2 through the first program, always opaque.
  void PositionYV12Texture(float left, float top, float right, float bottom, wxRect destination);

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
  // Makes `glFont` the active font during an overlay pass; outside one, does nothing.
  void UseOverlayFont(wxGLFont* glFont);
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
  // A driver string's bytes as text: UTF-8, or Latin-1 where they are not UTF-8; empty for null.
  static wxString DriverString(const char* bytes);
  // A new buffer name, 0 when none could be generated.
  virtual unsigned int GeneratePixelBufferName();

  // Replaces this renderer's context and canvas with new ones, the context becoming the new
  // share partner of the process; the hook for a driver that needs a context per renderer.
  void SwitchToMultipleContexts();

  // Texture coordinates of a quad's left, top, right and bottom edges.
  struct TextureRect {
    float left;
    float top;
    float right;
    float bottom;
  };
  // Coordinates of a source rectangle of the video texture set: from its first to its last
  // texel, normalised by the texture size unless the set is a rectangle texture.
  TextureRect SourceCoordinates(wxRect source, bool rectangular);

  bool m_isGLInitialized;      // InitGL has run
  InternalGLCanvas* m_canvas;  // null when GL was unsupported at construction
  wxGLContext* m_context;      // may be m_sharedContext, which this renderer does not own
  bool m_isDoubleBuffered;     // never cleared: SwapBuffers swaps rather than flushes
  wxRect m_viewport;           // last rectangle given to glViewport
  wxRect m_ortho;              // last rectangle given to the projection
  // The frame's GL objects (one texture and pixel buffer per plane, the YUV programs), made by
  // the frame upload and deleted together by DeleteTextures.
  wxSize m_textureSize;     // plane 0's texture, from DetermineTextureSize
  void* m_hardwareSurface;  // a decoder's hardware surface; no decoder sets one, so null
  std::vector<unsigned int> m_textures;
  std::vector<unsigned int> m_pixelBuffers;
  std::vector<unsigned int> m_programs;
  // Texture name to its target; images' textures keep their entries after leaving m_textures.
  std::map<unsigned int, unsigned int> m_textureTargets;
  // The pixel format the texture set was made for. It is kept here rather than in the base's
  // rendered pixel format, which Render overwrites with every paint.
  int m_texturePixelFormat;

  // Fonts used in this renderer's overlay passes, and the one inside its Begin/End bracket.
  std::vector<FontReference*> m_overlayFonts;
  wxGLFont* m_activeOverlayFont;
  bool m_inOverlayPass;      // between the start and the end of DrawOverlays' host callback
  bool m_makeCurrentFailed;  // the last attempt to make the context current failed

 private:
  // Appends the capability lines for the flags and the given driver strings.
  static void AppendCapabilities(const wxString& vendor, const wxString& renderer,
                                 const wxString& version);
  // Whether the display offers a GL visual for a canvas with the toolkit's default attributes.
  static bool HasGLVisual();
  // Makes the context current on the canvas, or, when that fails, no context at all.
  void MakeContextCurrent();
  // Whether the upload just made left a GL error behind (logged).
  bool UploadFailed();
  // Sets the GL colour; false (and nothing set) for an invalid colour.
  static bool SetColour(const wxColour& colour);
  // Sets the pitches of the current format's planes for the texture size.
  void SetPitches(int* pitches);
  // Maps every pixel buffer into `planes`; on a failed mapping unmaps them all and fails.
  bool MapPixelBuffers(unsigned char** planes, int* pitches);
  // Lends the client-memory frame buffer, planes laid out for a frame `height` rows high.
  void LendClientMemory(int height, unsigned char** planes, const int* pitches);
  void UploadFromClientMemory(unsigned char** planes);
  void UploadFromPixelBuffers();
  // One plane of the current format from `data` into its texture.
  void UploadFramePlane(size_t plane, const unsigned char* data);
  // Binds a texture on its target and uploads width x height texels from `data` (an offset
  // into the bound pixel-unpack buffer, if any).
  void UploadPlane(unsigned int texture, int width, int height, unsigned int format,
                   const unsigned char* data);
  // Appends a pixel buffer of `bufferSize` bytes; false (and nothing appended) on failure.
  bool CreatePixelBuffer(int bufferSize);
  // Whether a frame of these sides and format can be laid out in textures and lent.
  bool CanLayOut(int width, int height, int format);
  // The lent client-memory planes of a `height`-row frame, from the frame buffer as it is.
  void LayOutClientPlanes(int height, unsigned char** planes, const int* pitches);
  // Whether a scrolled window is the parent or one of its ancestors.
  bool HasScrolledAncestor() const;
  // Whether the parent's client area lies wholly inside every scrolled window around it.
  bool IsInsideScrolledWindows() const;
  void MirrorParentToolTip();
  void ClearToParentBackground();
  // Hides and detaches the shared canvas (kept for reuse), destroys any other.
  void ReleaseCanvas();
  // Deletes this renderer's textures, fonts and images in its share group.
  void ReleaseGLObjects();
  // The tile window is going while this renderer lives on (a back-end replaced by the facade
  // waits for idle-time deletion): its GL objects and canvas go now, while the canvas still
  // exists, and from then on the renderer has no parent.
  void OnParentDestroyed(wxWindowDestroyEvent& event);

  std::unique_ptr<EventBinding<wxSizeEvent, OpenGLRenderer>> m_parentSize;
  std::unique_ptr<EventBinding<wxWindowDestroyEvent, OpenGLRenderer>> m_parentDestroy;

  wxDECLARE_EVENT_TABLE();
};
