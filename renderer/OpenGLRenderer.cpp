// OpenGLRenderer: capability probe, canvas and context lifecycle, the draw bracket and the
// overlay primitives of the GL back-end.
#include "OpenGLRenderer.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

#include <GL/glu.h>
#include <wx/tooltip.h>

#include "GLEntryPoints.h"
#include "InternalGLCanvas.h"
#include "NativeWindow.h"
#include "RendererLog.h"
#include "wxGLFont.h"

namespace {

constexpr const char* kSource = "renderer/OpenGLRenderer";

// After the first renderer exists the context is re-bound on every SetCurrent, because the
// toolkit or the host may have made another context current in between.
bool m_alwaysSetCurrent = false;
// Live renderers; the shared canvas and context go when it falls back to 0.
int RendererCount = 0;

wxString GLString(unsigned int name) {
  const GLubyte* text = glGetString(name);
  return text ? wxString::FromUTF8(reinterpret_cast<const char*>(text)) : wxString();
}

// Whether the implementation accepts a texture of this size and format, asked through the
// proxy target so that nothing is allocated.
bool ProxyTextureFits(int internalFormat, int width, int height, unsigned int format) {
  glTexImage2D(GL_PROXY_TEXTURE_2D, 0, internalFormat, width, height, 0, format, GL_UNSIGNED_BYTE,
               nullptr);
  GLint accepted = 0;
  glGetTexLevelParameteriv(GL_PROXY_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &accepted);
  return accepted == width;
}

const char* YesNo(bool value) { return value ? "Yes" : "No"; }

// A colour byte as GL's 0 to 1.
float Unit(unsigned char byte) { return static_cast<float>(byte / 255.0); }

// Offsets of the far edge of a wide line, per unit of width, by the direction of the line:
// rows for y2 < y1, y2 = y1, y2 > y1; columns for x2 < x1, x2 = x1, x2 > x1. The full width
// goes into each axis, also for diagonals.
constexpr int kLineOffsetX[3][3] = {{-1, 1, 1}, {0, 0, 0}, {-1, 1, 1}};
constexpr int kLineOffsetY[3][3] = {{1, 0, 1}, {1, 0, 1}, {-1, 0, -1}};

int Direction(int from, int to) { return to < from ? 0 : (to == from ? 1 : 2); }

// Vertices sit half a pixel up and left of the integer point (x, y).
void VertexMinusHalf(int x, int y) {
  glVertex2f(static_cast<float>(x) - 0.5f, static_cast<float>(y) - 0.5f);
}

// One ring of an outline: the pixel centres of the rectangle's outermost rows and columns,
// closed back to its start.
void OutlineRing(const wxRect& rect) {
  const float left = static_cast<float>(rect.x) + 0.5f;
  const float top = static_cast<float>(rect.y) + 0.5f;
  const float right = static_cast<float>(rect.x + rect.width) - 1.5f;
  const float bottom = static_cast<float>(rect.y + rect.height) - 1.5f;
  glVertex2f(left, top);
  glVertex2f(right, top);
  glVertex2f(right, bottom);
  glVertex2f(left, bottom);
  glVertex2f(left, top);
}

template <typename Deleter>
void DeleteNames(std::vector<unsigned int>& names, Deleter deleter) {
  if (names.empty()) return;
  deleter(static_cast<GLsizei>(names.size()), names.data());
  names.clear();
}

// Shows a hidden window for as long as it lives and hides it again afterwards: a context
// cannot be made current on a canvas whose window is hidden.
class ShownWhileAlive {
 public:
  explicit ShownWhileAlive(wxWindow* window)
      : m_window(window && !window->IsShown() ? window : nullptr) {
    if (m_window) m_window->Show();
  }
  ~ShownWhileAlive() {
    if (m_window) m_window->Hide();
  }
  ShownWhileAlive(const ShownWhileAlive&) = delete;
  ShownWhileAlive& operator=(const ShownWhileAlive&) = delete;

 private:
  wxWindow* m_window;
};

}  // namespace

bool OpenGLRenderer::m_isSharedContext = false;
InternalGLCanvas* OpenGLRenderer::m_sharedCanvas = nullptr;
wxGLContext* OpenGLRenderer::m_sharedContext = nullptr;
bool OpenGLRenderer::m_isBgrSupported = false;
bool OpenGLRenderer::m_isPixelBufferSupported = false;
bool OpenGLRenderer::m_isNonPow2Supported = false;
bool OpenGLRenderer::m_isShaderSupported = false;
bool OpenGLRenderer::m_isTextRectSupported = false;
bool OpenGLRenderer::m_isSupported = true;
bool OpenGLRenderer::m_isRecommended = true;
wxSize OpenGLRenderer::m_maxTextureSize(0, 0);
wxRect OpenGLRenderer::m_sharedViewport(0, 0, 0, 0);
std::vector<FontReference*> OpenGLRenderer::m_sharedFonts;

// ---- Extension strings -----------------------------------------------------------------------

bool IsExtensionSupported(const char* name) {
  static std::string extensions;
  static bool loaded = false;
  if (!loaded) {
    // Marked before reading, so that a failed first read is never retried.
    loaded = true;
    const GLubyte* list = glGetString(GL_EXTENSIONS);
    if (!list) {
      LogVerbose(kSource, "IsExtensionSupported",
                 "Error getting supported extensions. Is your OpenGL context created and set?\n");
      return false;
    }
    extensions = reinterpret_cast<const char*>(list);
    LogVerbose(kSource, "IsExtensionSupported",
               wxString::Format("GL Extensions: %s", extensions.c_str()));
  }
  return IsExtensionSupported(extensions.c_str(), name);
}

// A match counts only as a whole token: preceded by the start of the list or a space, and
// followed by a space or the end. Only spaces separate tokens.
bool IsExtensionSupported(const char* list, const char* name) {
  if (!list || !name || !*name) return false;
  const size_t length = strlen(name);
  const char* start = list;
  for (;;) {
    const char* found = strstr(start, name);
    if (!found) return false;
    while (found != list && found[-1] != ' ') {
      found = strstr(found + length, name);
      if (!found) return false;
    }
    const char after = found[length];
    if (after == '\0' || after == ' ') return true;
    start = found + length;
  }
}

// The window-system layer's list is never read: the first call only marks it loaded, and
// every call matches against the empty list.
bool IsGLXExtensionSupported(const char* name) {
  static std::string extensions;
  static bool loaded = false;
  if (!loaded) {
    loaded = true;
    return false;
  }
  return IsExtensionSupported(extensions.c_str(), name);
}

// ---- Capability probe ------------------------------------------------------------------------

int OpenGLRenderer::StaticInit(OpenGLRenderer* renderer) {
  DriverQueries driver;
  driver.hasExtension = [](const char* name) { return IsExtensionSupported(name); };
  driver.acceptsSquareTexture = [](int side) {
    return ProxyTextureFits(GL_RGBA, side, side, GL_RGBA);
  };
  driver.string = GLString;
  driver.entryPoints = &GLEntryPoints::Get();
  return Probe(renderer, driver);
}

// The description cleared is that of RENDER_MODE_RESERVED while the lines go to
// RENDER_MODE_OPENGL; hosts read the registry that way, so it is kept.
int OpenGLRenderer::Probe(OpenGLRenderer* renderer, const DriverQueries& driver) {
  ClearRendererDesc(RENDER_MODE_RESERVED);
  renderer->SetCurrent();
  DetectExtensions(driver);
  m_maxTextureSize = FindMaxTextureSize(driver.acceptsSquareTexture, m_maxTextureSize);
  glGetError();  // the proxy probes may have raised errors; they mean nothing here
  const wxString rendererName = driver.string(GL_RENDERER);
  const wxString vendor = driver.string(GL_VENDOR);
  AppendCapabilities(vendor, rendererName, driver.string(GL_VERSION));
  m_isRecommended = IsRecommendedRenderer(rendererName);
  const bool wasSharedContext = m_isSharedContext;
  m_alwaysSetCurrent = true;
  if (!m_isRecommended) {
    AppendRendererDesc(RENDER_MODE_OPENGL,
                       "OpenGL Information - OpenGL is not recommended on this system.");
  }
  // The place for a driver rule that needs a context per renderer: such a rule clears
  // m_isSharedContext above, and the renderer then moves to a context of its own.
  if (m_isSharedContext != wasSharedContext) renderer->SwitchToMultipleContexts();
  return 0;
}

// For the two names of one feature, the second is asked only when the first is missing.
void OpenGLRenderer::DetectExtensions(const DriverQueries& driver) {
  const auto& has = driver.hasExtension;
  const GLEntryPoints& functions = *driver.entryPoints;
  m_isBgrSupported = has("GL_EXT_bgra");
  m_isPixelBufferSupported =
      (has("GL_EXT_pixel_buffer_object") || has("GL_ARB_pixel_buffer_object")) &&
      functions.HasBufferFunctions();
  m_isNonPow2Supported = has("GL_ARB_texture_non_power_of_two");
  m_isShaderSupported = has("GL_ARB_fragment_program") && functions.HasProgramFunctions() &&
                        functions.HasMultitextureFunctions();
  m_isTextRectSupported = has("GL_EXT_texture_rectangle") || has("GL_NV_texture_rectangle");
}

// The only bound is the driver's first refusal (and the largest side an int can double to).
wxSize OpenGLRenderer::FindMaxTextureSize(const std::function<bool(int side)>& accepts,
                                          wxSize previous) {
  wxSize size = previous;
  for (int side = 256; accepts(side); side *= 2) {
    size = wxSize(side, side);
    if (side > INT_MAX / 2) break;
  }
  return size;
}

void OpenGLRenderer::AppendCapabilities(const wxString& vendor, const wxString& renderer,
                                        const wxString& version) {
  const wxString lines[] = {
      wxString::Format("OpenGL Capabilities - Vendor: %s", vendor),
      wxString::Format("OpenGL Capabilities - Renderer: %s", renderer),
      wxString::Format("OpenGL Capabilities - Version: %s", version),
      wxString::Format("OpenGL Capabilities - BGR Supported: %s", YesNo(m_isBgrSupported)),
      wxString::Format("OpenGL Capabilities - Pixel Buffer Supported: %s",
                       YesNo(m_isPixelBufferSupported)),
      wxString::Format("OpenGL Capabilities - Non Power of 2 Supported: %s",
                       YesNo(m_isNonPow2Supported)),
      wxString::Format("OpenGL Capabilities - Rectangular Textures Supported: %s",
                       YesNo(m_isTextRectSupported)),
      wxString::Format("OpenGL Capabilities - Shaders Supported: %s", YesNo(m_isShaderSupported)),
      wxString::Format("OpenGL Capabilities - Max Texture Size: %dx%d", m_maxTextureSize.x,
                       m_maxTextureSize.y),
      wxString::Format("OpenGL Capabilities - Shared Context: %s", YesNo(m_isSharedContext)),
  };
  for (const wxString& line : lines) AppendRendererDesc(RENDER_MODE_OPENGL, line);
}

// Implementations known to be slow or broken for video: indirect rendering, Mesa's old
// software rasteriser and the Windows fallback. The match is case-sensitive.
bool OpenGLRenderer::IsRecommendedRenderer(const wxString& renderer) {
  return !renderer.Contains("Indirect") && !renderer.Contains("Software Rasterizer") &&
         !renderer.Contains("GDI Generic");
}

void OpenGLRenderer::SwitchToMultipleContexts() {
  AppendRendererDesc(RENDER_MODE_OPENGL,
                     "OpenGL Information - Switching to multiple contexts due to known driver "
                     "issues.");
  if (m_context == m_sharedContext) m_context = nullptr;
  delete m_sharedContext;
  m_sharedContext = nullptr;
  delete m_context;
  m_context = nullptr;
  // The canvas about to be destroyed must not stay behind as the shared one: the new canvas
  // takes its place.
  if (m_canvas && m_canvas == m_sharedCanvas) m_sharedCanvas = nullptr;
  InternalGLCanvas* canvas = CreateCanvas();
  if (m_canvas) m_canvas->Destroy();
  m_canvas = canvas;
}

// ---- Construction and destruction ------------------------------------------------------------

OpenGLRenderer::OpenGLRenderer(wxWindow* parent)
    : RendererBase(parent),
      m_isGLInitialized(false),
      m_canvas(nullptr),
      m_context(nullptr),
      m_isDoubleBuffered(true),
      m_viewport(0, 0, 0, 0),
      m_ortho(0, 0, 0, 0),
      m_activeOverlayFont(nullptr) {
  ++RendererCount;
  if (GetIsSupported()) {
    m_canvas = CreateCanvas();
    static const int init = StaticInit(this);
    if (init != 0) m_isSupported = false;
  }
  m_parentSize = std::make_unique<EventBinding<wxSizeEvent, OpenGLRenderer>>(
      m_parent, wxEVT_SIZE, &OpenGLRenderer::OnSize, this);
  wxSizeEvent initialSize(m_parent->GetClientSize());
  OnSize(initialSize);
}

// The order matters: the context must be current while the GL objects go, the shared context
// outlives every renderer but the last, and the shared canvas stays alive (hidden, detached)
// until then.
OpenGLRenderer::~OpenGLRenderer() {
  const ShownWhileAlive parentShown(m_parent);
  SetCurrent();
  DeleteTextures();
  ResetOverlayFonts();
  CleanupOverlayFonts();
  m_parentSize.reset();
  if (m_context == m_sharedContext) m_context = nullptr;
  --RendererCount;
  if (RendererCount == 0 && m_sharedContext) {
    m_sharedViewport = wxRect(0, 0, 0, 0);
    delete m_sharedContext;
    m_sharedContext = nullptr;
  }
  ReleaseCanvas();
  if (RendererCount == 0 && m_sharedCanvas) {
    m_sharedCanvas->Destroy();
    m_sharedCanvas = nullptr;
  }
  delete m_context;
  m_context = nullptr;
}

InternalGLCanvas* OpenGLRenderer::CreateCanvas() {
  auto* canvas = new InternalGLCanvas(m_parent, wxID_ANY, nullptr, wxDefaultPosition, wxDefaultSize,
                                      wxTRANSPARENT_WINDOW | wxFULL_REPAINT_ON_RESIZE, "OpenGL",
                                      wxNullPalette);
  RealizeNativeWindow(canvas);  // tiles are often built before their window is first shown
  if (!m_sharedCanvas) m_sharedCanvas = canvas;
  if (!m_isSharedContext) {
    m_context = new wxGLContext(canvas, m_sharedContext);
  } else {
    m_context = m_sharedContext ? m_sharedContext : new wxGLContext(canvas);
  }
  if (!m_sharedContext) m_sharedContext = m_context;
  return canvas;
}

void OpenGLRenderer::ReleaseCanvas() {
  if (m_canvas && m_canvas == m_sharedCanvas) {
    m_canvas->Hide();
    m_parent->RemoveChild(m_canvas);
  } else if (m_canvas) {
    m_canvas->Destroy();
  }
  m_canvas = nullptr;
}

// ---- Context, viewport and projection --------------------------------------------------------

void OpenGLRenderer::SetCurrent() {
  static InternalGLCanvas* current = nullptr;
  if (!m_canvas) return;
  if (current) {
    if (!IsContextReady(true)) return;
    if (!m_alwaysSetCurrent && m_canvas == current) return;
  }
  current = m_canvas;
  m_context->SetCurrent(*m_canvas);
}

// Without a canvas there is nothing that could be ready.
bool OpenGLRenderer::IsContextReady(bool check) {
  if (!check) return true;
  return m_canvas && m_canvas->IsShown();
}

bool OpenGLRenderer::HasContext() { return m_canvas && m_context; }

bool OpenGLRenderer::GetIsSupported() { return m_isSupported; }

// The parent's own size handlers still run; a parent of no size leaves the canvas as it is.
void OpenGLRenderer::OnSize(wxSizeEvent& event) {
  event.Skip();
  if (!m_canvas) return;
  const wxSize size = m_parent->GetClientSize();
  if (size.x <= 0 || size.y <= 0) return;
  SetCurrent();
  m_canvas->SetClientSize(size.x, size.y);
}

void OpenGLRenderer::UpdateViewport(wxRect rect) {
  const wxRect& record = m_isSharedContext ? m_sharedViewport : m_viewport;
  if (record == rect) return;
  glViewport(rect.x, rect.y, rect.width, rect.height);
  m_viewport = rect;
  if (m_isSharedContext) m_sharedViewport = rect;
  // A new viewport always reloads the projection, even for the same rectangle.
  m_ortho.width = 0;
  m_ortho.height = 0;
}

// Pixel coordinates with the origin at the top left and y growing downwards; the last column
// and row map to the right and bottom edges (width - 1, not width).
void OpenGLRenderer::UpdateOrtho(wxRect rect) {
  if (m_ortho == rect) return;
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  gluOrtho2D(static_cast<GLdouble>(rect.x), static_cast<GLdouble>(rect.x + rect.width - 1),
             static_cast<GLdouble>(rect.y + rect.height - 1), static_cast<GLdouble>(rect.y));
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  m_ortho = rect;
}

// Zeroing the viewport records makes the next UpdateViewport call glViewport for certain.
void OpenGLRenderer::InitGL() {
  EnableVSync(false);
  m_sharedViewport = wxRect(0, 0, 0, 0);
  m_viewport = wxRect(0, 0, 0, 0);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
}

// No swap-interval function is bound on this platform, so vertical sync stays as the driver
// has it and the request is only logged.
void OpenGLRenderer::EnableVSync(bool enable) {
  LogVerbose(kSource, "EnableVSync",
             wxString::Format("Unable to %s vsync. Swap interval function not found.",
                              enable ? "enable" : "disable"));
}

// ---- Draw bracket ----------------------------------------------------------------------------

// Nothing is drawn into a hidden canvas, and GL is set up only once it is first shown.
void OpenGLRenderer::OnBeforeDraw(wxDC*) {
  if (!IsContextReady(true)) return;
  SetCurrent();
  if (!m_isGLInitialized) {
    InitGL();
    m_isGLInitialized = true;
  }
  MirrorParentToolTip();
  const wxSize size = GetRenderClientSize();
  UpdateViewport(wxRect(0, 0, size.x, size.y));
  UpdateOrtho(wxRect(0, 0, size.x, size.y));
  ClearToParentBackground();
}

void OpenGLRenderer::OnAfterDraw(wxDC*) { SwapBuffers(); }

void OpenGLRenderer::SwapBuffers() {
  if (!m_canvas || !m_canvas->IsShown()) return;
  if (m_isDoubleBuffered) {
    m_canvas->SwapBuffers();
  } else {
    glFlush();
  }
}

// The canvas covers the tile, so the tile's tooltip has to live on the canvas too.
void OpenGLRenderer::MirrorParentToolTip() {
  const wxToolTip* parentTip = m_parent->GetToolTip();
  const wxToolTip* canvasTip = m_canvas->GetToolTip();
  if (parentTip) {
    if (!canvasTip || canvasTip->GetTip() != parentTip->GetTip()) {
      m_canvas->SetToolTip(parentTip->GetTip());
    }
  } else if (canvasTip) {
    m_canvas->UnsetToolTip();
  }
}

void OpenGLRenderer::ClearToParentBackground() {
  const wxColour background = m_parent->GetBackgroundColour();
  glClearColor(Unit(background.Red()), Unit(background.Green()), Unit(background.Blue()),
               Unit(background.Alpha()));
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

bool OpenGLRenderer::ClearFrame() {
  if (!m_textures.empty()) {
    SetCurrent();
    DeleteTextures();
  }
  return RendererBase::ClearFrame();
}

void OpenGLRenderer::DeleteTextures() {
  for (const unsigned int texture : m_textures) m_textureTargets.erase(texture);
  DeleteNames(m_textures, glDeleteTextures);
  const GLEntryPoints& functions = GLEntryPoints::Get();
  DeleteNames(m_pixelBuffers, functions.DeleteBuffers);
  DeleteNames(m_programs, functions.DeleteProgramsARB);
}

// ---- Frame and images (drawn once frames are uploaded as textures) ---------------------------

// The frame is drawn from the renderer's texture set; without one the background cleared by
// OnBeforeDraw stays, and no texture set is made yet.
void OpenGLRenderer::DrawFrame(wxDC*) {}

IRendererImage* OpenGLRenderer::DoCreateImage(const wxImage&) { return nullptr; }

void OpenGLRenderer::DrawImage(wxDC*, IRendererImage*, int, int) {}

void OpenGLRenderer::DrawBitmap(wxDC*, wxBitmap, int, int) {}

// ---- Overlays --------------------------------------------------------------------------------

// Every overlay primitive is alpha-blended; blending is off again for the next frame.
// Every overlay primitive is alpha-blended. Fonts this renderer does not use in the pass are
// released at its end.
void OpenGLRenderer::DrawOverlays(wxDC* dc) {
  if (!IsContextReady(true)) return;
  ResetOverlayFonts();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  RendererBase::DrawOverlays(dc);
  glDisable(GL_BLEND);
  SetActiveOverlayFont(nullptr);
  CleanupOverlayFonts();
}

// Measuring may make glyphs, so the context must be current.
wxSize OpenGLRenderer::MeasureText(const wxString& text, wxFont font) {
  wxGLFont* glFont = GetOverlayFont(font);
  SetActiveOverlayFont(glFont);
  float width = 0.0f;
  float height = 0.0f;
  glFont->MeasureText(text, width, height);
  return wxSize(static_cast<int>(width), static_cast<int>(height));
}

// One line of text with its top-left corner where the alignment puts it, on an optional box
// exactly the size of the text.
void OpenGLRenderer::DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour colour,
                                 wxRect rect, int alignment, bool scale, wxColour background) {
  if (scale) font = GetScaledFont(font, text, wxPoint(rect.x, rect.y));
  wxGLFont* glFont = GetOverlayFont(font);
  SetActiveOverlayFont(glFont);
  const wxPoint position = GetTextLocation(font, text, rect, alignment);
  if (background.IsOk()) {
    RendererBase::DrawRect(dc, wxRect(position, MeasureText(text, font)), background);
  }
  glEnable(GL_TEXTURE_2D);
  SetColour(colour);
  glFont->WriteText(text, position.x - 0.5f, position.y - 0.5f, 0.0f);
  glDisable(GL_TEXTURE_2D);
}

void OpenGLRenderer::SetColour(const wxColour& colour) {
  glColor4f(Unit(colour.Red()), Unit(colour.Green()), Unit(colour.Blue()), Unit(colour.Alpha()));
}

// Corners half a pixel up and left of the integer corners, so the quad covers exactly the
// rectangle's pixels.
void OpenGLRenderer::DoDrawRect(wxDC*, wxRect rect, wxColour colour) {
  SetColour(colour);
  glLineWidth(1.0f);
  glBegin(GL_QUADS);
  VertexMinusHalf(rect.x, rect.y);
  VertexMinusHalf(rect.x + rect.width, rect.y);
  VertexMinusHalf(rect.x + rect.width, rect.y + rect.height);
  VertexMinusHalf(rect.x, rect.y + rect.height);
  glEnd();
}

// Thickness is made of nested one-pixel rings inside the rectangle, all in one loop: the
// rings are joined by a diagonal step at the top left and the loop closes from the innermost
// ring back to the outermost.
void OpenGLRenderer::DoDrawRectOutline(wxDC*, wxRect rect, wxColour colour, int width) {
  SetColour(colour);
  glLineWidth(1.0f);
  glBegin(GL_LINE_LOOP);
  for (int ring = 0; ring < width; ++ring) {
    OutlineRing(rect);
    rect.Inflate(-1, -1);
  }
  glEnd();
}

// Thin lines are GL lines; wider ones are quads whose far edge is offset by the full width in
// the direction the table gives. The quad path leaves the GL line width alone.
void OpenGLRenderer::DoDrawLine(wxDC*, wxPoint from, wxPoint to, wxColour colour, int width) {
  SetColour(colour);
  if (width < 2) {
    glLineWidth(1.0f);
    glBegin(GL_LINES);
    VertexMinusHalf(from.x, from.y);
    VertexMinusHalf(to.x, to.y);
    glEnd();
    return;
  }
  const int row = Direction(from.y, to.y);
  const int column = Direction(from.x, to.x);
  const wxPoint offset(kLineOffsetX[row][column] * width, kLineOffsetY[row][column] * width);
  glBegin(GL_QUADS);
  VertexMinusHalf(from.x, from.y);
  VertexMinusHalf(to.x, to.y);
  VertexMinusHalf(to.x + offset.x, to.y + offset.y);
  VertexMinusHalf(from.x + offset.x, from.y + offset.y);
  glEnd();
}

// The renderer's own event table stays empty: its one handler, OnSize, is bound on the parent
// at run time.
wxBEGIN_EVENT_TABLE(OpenGLRenderer, wxEvtHandler) wxEND_EVENT_TABLE()

    // ---- Overlay fonts --------------------------------------------------------------------------

    namespace {
  // The font a cache entry stands for: an invalid font measures and draws as the default one.
  wxFont UsableFont(const wxFont& font) { return font.IsOk() ? font : *wxNORMAL_FONT; }

}  // namespace

FontReference* OpenGLRenderer::GetFontReference(std::vector<FontReference*>& fonts, wxFont font) {
  const wxString description = UsableFont(font).GetNativeFontInfoDesc();
  for (FontReference* entry : fonts) {
    if (entry->description == description) return entry;
  }
  return nullptr;
}

void OpenGLRenderer::RemoveFontReference(std::vector<FontReference*>& fonts, wxFont font) {
  FontReference* entry = GetFontReference(fonts, font);
  if (!entry) return;
  fonts.erase(std::find(fonts.begin(), fonts.end(), entry));
  delete entry->font;
  delete entry->glFont;
  delete entry;
}

// The glyph font of the entry for `font` in `fonts`, counting one more use; without an entry,
// a new one with the glyph font `make` gives.
wxGLFont* OpenGLRenderer::UseFont(std::vector<FontReference*>& fonts, const wxFont& font,
                                  const std::function<wxGLFont*()>& make) {
  if (FontReference* entry = GetFontReference(fonts, font)) {
    ++entry->refCount;
    return entry->glFont;
  }
  wxGLFont* glFont = make();
  fonts.push_back(new FontReference{new wxFont(font), glFont, 1, font.GetNativeFontInfoDesc()});
  return glFont;
}

wxGLFont* OpenGLRenderer::CreateGLFont(wxFont font) {
  font = UsableFont(font);
  return UseFont(m_sharedFonts, font, [&font] { return new wxGLFont(font); });
}

wxGLFont* OpenGLRenderer::GetOverlayFont(wxFont font) {
  font = UsableFont(font);
  return UseFont(m_overlayFonts, font, [this, &font] { return CreateGLFont(font); });
}

void OpenGLRenderer::ReleaseGLFont(wxGLFont* glFont) {
  if (!glFont) return;
  if (glFont == m_activeOverlayFont) SetActiveOverlayFont(nullptr);
  FontReference* shared = GetFontReference(m_sharedFonts, glFont->GetFont());
  if (!shared) {
    delete glFont;
    return;
  }
  if (--shared->refCount == 0) {
    const wxFont font = *shared->font;  // the entry goes with the removal
    RemoveFontReference(m_sharedFonts, font);
  }
}

void OpenGLRenderer::SetActiveOverlayFont(wxGLFont* glFont) {
  if (glFont == m_activeOverlayFont) return;
  if (m_activeOverlayFont) m_activeOverlayFont->End();
  m_activeOverlayFont = glFont;
  if (m_activeOverlayFont) m_activeOverlayFont->Begin();
}

void OpenGLRenderer::ResetOverlayFonts() {
  for (FontReference* entry : m_overlayFonts) entry->refCount = 0;
}

// The unused entries are collected first, so removing them does not disturb the scan. Each
// gives its borrowed glyph font back to the process-wide list before the entry goes.
void OpenGLRenderer::CleanupOverlayFonts() {
  std::vector<FontReference*> unused;
  for (FontReference* entry : m_overlayFonts) {
    if (entry->refCount == 0) unused.push_back(entry);
  }
  for (FontReference* entry : unused) {
    ReleaseGLFont(entry->glFont);
    entry->glFont = nullptr;
    const wxFont font = *entry->font;
    RemoveFontReference(m_overlayFonts, font);
  }
}
